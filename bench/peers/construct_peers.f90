! construct_peers.f90 - the same operations through GNU Fortran's own
! intrinsics, called from the construction benchmarks with the same data.
module construct_peers
  use iso_c_binding
  implicit none
contains
  subroutine peer_transpose_r8(n, a, b) bind(C, name="peer_transpose_r8")
    integer(c_int), value :: n
    real(c_double), intent(in) :: a(n, n)
    real(c_double), intent(out) :: b(n, n)
    b = transpose(a)
  end subroutine

  subroutine peer_reshape21_r4(n, a, b) bind(C, name="peer_reshape21_r4")
    integer(c_int), value :: n
    real(c_float), intent(in) :: a(n * n)
    real(c_float), intent(out) :: b(n, n)
    b = reshape(a, [n, n], order=[2, 1])
  end subroutine

  subroutine peer_spread_r8(n, dim, v, b) bind(C, name="peer_spread_r8")
    integer(c_int), value :: n, dim
    real(c_double), intent(in) :: v(n)
    real(c_double), intent(out) :: b(n, n)
    b = spread(v, dim, n)
  end subroutine


  subroutine peer_pack_only_r8(n, a, lm, count) bind(C, name="peer_pack_only_r8")
    integer(c_int), value :: n
    real(c_double), intent(in) :: a(n)
    logical(4), intent(in) :: lm(n)
    integer(c_int), intent(out) :: count
    real(c_double), allocatable :: r(:)
    r = pack(a, lm)
    count = size(r)
  end subroutine

  subroutine peer_unpack_r8(n, nv, v, lm, f, b) bind(C, name="peer_unpack_r8")
    integer(c_int), value :: n, nv
    real(c_double), intent(in) :: v(nv), f(n)
    logical(4), intent(in) :: lm(n)
    real(c_double), intent(out) :: b(n)
    b = unpack(v, lm, f)
  end subroutine

  subroutine peer_cshift_r8(n, shift, dim, a, b) bind(C, name="peer_cshift_r8")
    integer(c_int), value :: n, shift, dim
    real(c_double), intent(in) :: a(n, n)
    real(c_double), intent(out) :: b(n, n)
    b = cshift(a, shift, dim)
  end subroutine

  subroutine peer_eoshift_r8(n, shift, dim, a, b) bind(C, name="peer_eoshift_r8")
    integer(c_int), value :: n, shift, dim
    real(c_double), intent(in) :: a(n, n)
    real(c_double), intent(out) :: b(n, n)
    b = eoshift(a, shift, 0.0_c_double, dim)
  end subroutine
end module
