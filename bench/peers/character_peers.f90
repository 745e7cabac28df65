! GNU Fortran peers of the character benchmarks: each call reaches the GNU
! Fortran runtime's own string routines (the operands are not constants).
subroutine character_peer_index(s, t, back, r)
  character(*), intent(in) :: s, t
  integer, intent(in) :: back
  integer, intent(out) :: r
  r = index(s, t, back /= 0)
end subroutine

subroutine character_peer_scan(s, t, back, r)
  character(*), intent(in) :: s, t
  integer, intent(in) :: back
  integer, intent(out) :: r
  r = scan(s, t, back /= 0)
end subroutine

subroutine character_peer_verify(s, t, back, r)
  character(*), intent(in) :: s, t
  integer, intent(in) :: back
  integer, intent(out) :: r
  r = verify(s, t, back /= 0)
end subroutine

subroutine character_peer_len_trim(s, r)
  character(*), intent(in) :: s
  integer, intent(out) :: r
  r = len_trim(s)
end subroutine
