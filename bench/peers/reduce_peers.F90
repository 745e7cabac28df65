! GNU Fortran peers of the reduction benchmarks.  Whole-array reductions
! with a scalar result, and reductions along a DIM known at compile time,
! are open-coded by gfortran; so each whole-array peer reduces an n x 1
! array along a DIM passed in at run time (1): a call of GNU Fortran's
! library routine (sum_i4, count_4_l, maxval_i4, maxloc1_4_i4, msum_r8, ...)
! that walks all n elements and returns a one-element array.  The C++
! benchmarks call these as peer_<name>_ with every argument by reference.

! PEER(name, intrinsic, array type, result type): r = intrinsic(a(n, 1), dim=d)
#define PEER(NAME, FN, T, R) \
subroutine NAME(a, n, d, r); implicit none; integer(4), intent(in) :: n, d; T, intent(in) :: a(n, 1); \
  R, intent(out) :: r; R :: t(1); t = FN(a, dim=d); r = t(1); end subroutine

PEER(peer_sum_i4, sum, integer(4), integer(4))
PEER(peer_count_l4, count, logical(4), integer(4))
PEER(peer_maxval_i4, maxval, integer(4), integer(4))
PEER(peer_maxval_r8, maxval, real(8), real(8))
PEER(peer_maxloc_i4, maxloc, integer(4), integer(4))
PEER(peer_minloc_r8, minloc, real(8), integer(4))
PEER(peer_sum_r8, sum, real(8), real(8))

subroutine peer_msum_r8(a, m, n, d, r)
  implicit none
  integer(4), intent(in) :: n, d
  real(8), intent(in) :: a(n, 1)
  logical(4), intent(in) :: m(n, 1)
  real(8), intent(out) :: r
  real(8) :: t(1)
  t = sum(a, dim=d, mask=m)
  r = t(1)
end subroutine
subroutine peer_dot_r8(a, b, n, r)
  implicit none
  integer(4), intent(in) :: n
  real(8), intent(in) :: a(n), b(n)
  real(8), intent(out) :: r
  r = dot_product(a, b)
end subroutine
! SUM(A, DIM=d) of an n x n matrix into r(n).
subroutine peer_sum_dim_r8(a, n, d, r)
  implicit none
  integer(4), intent(in) :: n, d
  real(8), intent(in) :: a(n, n)
  real(8), intent(out) :: r(n)
  r = sum(a, dim=d)
end subroutine
