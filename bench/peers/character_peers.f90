! GNU Fortran peer of the character benchmarks: each call reaches the GNU
! Fortran runtime's own string routine (the operands are not constants).
! which: 1 INDEX, 2 SCAN, 3 VERIFY, 4 LEN_TRIM (t and back unused).
subroutine character_peer(which, s, t, back, r)
  integer, intent(in) :: which, back
  character(*), intent(in) :: s, t
  integer, intent(out) :: r
  select case (which)
  case (1)
    r = index(s, t, back /= 0)
  case (2)
    r = scan(s, t, back /= 0)
  case (3)
    r = verify(s, t, back /= 0)
  case default
    r = len_trim(s)
  end select
end subroutine
