! GNU Fortran's RANDOM_NUMBER on whole arrays, the speed reference for the
! array forms of RANDOM_NUMBER.
subroutine peer_random_r8(a, n) bind(c, name='peer_random_r8')
  use iso_c_binding
  integer(c_int), value :: n
  real(c_double) :: a(n)
  call random_number(a)
end subroutine

subroutine peer_random_r4(a, n) bind(c, name='peer_random_r4')
  use iso_c_binding
  integer(c_int), value :: n
  real(c_float) :: a(n)
  call random_number(a)
end subroutine
