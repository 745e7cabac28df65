! Construction against hand loops: CSHIFT and EOSHIFT (scalar and array SHIFT
! and BOUNDARY), PACK, UNPACK, SPREAD and RESHAPE with PAD and ORDER, on a
! reversed strided section of an array with lower bounds, for element sizes
! 1 to 32, scalar MASK and FIELD forms, and empty operands.
! serves: reshape reshape_4 reshape_8 reshape_r8 reshape_c8 reshape_c16 pack pack_s unpack1 unpack0 spread spread_scalar
! serves: cshift0_4 cshift0_8 cshift1_4 eoshift0_4 eoshift1_4 eoshift2_4 eoshift3_4
! forwards: cshift1_8
#include "kinds.inc"
#define KIND(T, C, code) block; T :: a(-2:5, 0:4); T, allocatable :: r(:,:), u(:); a = C(ia); \
  r = cshift(a(5:-2:-2, :), sh, 2); if (any(r /= C(wc))) stop code; \
  r = eoshift(a(5:-2:-2, :), vs, C(ib(1:5)), 1); if (any(r /= C(wev))) stop code + 1; \
  r = eoshift(a(5:-2:-2, :), sh, dim=2); if (any(r /= C(we0))) stop code + 2; \
  u = pack(a(5:-2:-2, :), mt); if (any(u /= C(wp))) stop code + 3; \
  r = unpack(u, mt, a(5:-2:-2, :)); if (any(r /= C(t))) stop code + 4; \
  r = spread(a(5, :), 1, 3); if (any(r /= C(spread(t(1, :), 1, 3))) .or. size(r, 1) /= 3) stop code + 5; \
  r = reshape(a(5:-2:-2, :), [5, 4], order=[2, 1]); if (any(r /= C(wr))) stop code + 6; end block
program con
  implicit none
  integer :: ia(-2:5, 0:4), t(4, 5), ib(9), sh, vs(5), wc(4, 5), we(4, 5), we0(4, 5), wcv(4, 5), wev(4, 5)
  integer :: wr(5, 4), i, j, k, n
  integer, allocatable :: wp(:), u(:), r(:,:), r3(:,:,:)
  logical :: mt(4, 5), yes = .true., no = .false.
  real(8) :: x(54)
  call random_number(x)
  ia = reshape(int(100 * x(1:40)), [8, 5])
  ib = int(100 * x(41:49)) + 200
  mt = reshape(x(35:54) > 0.5, [4, 5])
  t = ia(5:-2:-2, :)
  wp = [(pack_one(k), k = 1, count(mt))]
  do j = 1, 5
    do i = 1, 4
      wr(j, i) = t(1 + modulo(4 * (j - 1) + i - 1, 4), 1 + (4 * (j - 1) + i - 1) / 4)
    end do
  end do
  do sh = -6, 6, 4
    vs = [(modulo(sh * i, 11) - 5, i = 1, 5)]
    do j = 1, 5
      do i = 1, 4
        wc(i, j) = t(i, 1 + modulo(j - 1 + sh, 5))
        wcv(i, j) = t(1 + modulo(i - 1 + vs(j), 4), j)
        we(i, j) = merge(t(i, min(max(j + sh, 1), 5)), ib(i), j + sh >= 1 .and. j + sh <= 5)
        we0(i, j) = merge(we(i, j), 0, j + sh >= 1 .and. j + sh <= 5)
        wev(i, j) = merge(t(min(max(i + vs(j), 1), 4), j), ib(j), i + vs(j) >= 1 .and. i + vs(j) <= 4)
      end do
    end do
    ! every form on the section itself; kind 8 SHIFT and DIM
    if (any(cshift(ia(5:-2:-2, :), sh, 2) /= wc) .or. any(cshift(ia(5:-2:-2, :), int(sh, 8), 2_8) /= wc)) stop 1
    if (any(cshift(ia(5:-2:-2, :), vs, 1) /= wcv) .or. any(cshift(ia(5:-2:-2, :), int(vs, 8), 1) /= wcv)) stop 2
    if (any(eoshift(ia(5:-2:-2, :), sh, ib(1:4), 2) /= we) .or. any(eoshift(ia(5:-2:-2, :), vs, ib(1:5), 1) /= wev)) stop 3
    if (any(eoshift(ia(5:-2:-2, :), vs, 0, 1) /= merge(wev, 0, wev /= spread(ib(1:5), 1, 4)))) stop 5
    KIND(integer(1), I1, 10)
    KIND(integer(2), I2, 20)
    KIND(integer(4), int, 30)
    KIND(integer(8), I8, 40)
    KIND(real(8), R8, 50)
    KIND(complex(8), C8, 60)
    KIND(complex(16), C16, 70)
  end do
  ! PACK with VECTOR and scalar MASKs, UNPACK's scalar FIELD, SPREAD of a scalar and into rank 3
  n = count(mt)
  u = pack(t, mt, [ib, ib, ib])
  if (any(u(1:n) /= wp) .or. any(u(n + 1:) /= [(ib(1 + modulo(i - 1, 9)), i = n + 1, 27)]) .or. size(u) /= 27) stop 80
  if (any(pack(ia(5:-2:-2, :), mt .and. t >= 0) /= wp) .or. any(unpack(wp, t >= 0 .and. mt, 0) /= merge(t, 0, mt))) stop 79
  if (size(pack(t, no)) /= 0 .or. any(pack(t, yes) /= [t]) .or. any(pack(t, no, ib) /= ib)) stop 81
  r = unpack(wp, mt, -1)
  if (any(pack(r, mt) /= wp) .or. any(merge(r, -1, mt) /= r)) stop 82
  if (any(spread(sh, 1, n) /= sh) .or. size(spread(sh, 1, n)) /= n) stop 83
  r3 = spread(t, 2, 3)
  if (any(shape(r3) /= [4, 3, 5]) .or. any(r3(:, 2, :) /= t) .or. any(r3(:, 3, :) /= t)) stop 84
  ! RESHAPE with PAD and ORDER, empty operands
  r3 = reshape(t(1:3, 1), [2, 3, 2], pad=[-1, -2], order=[3, 1, 2])
  do k = 1, 2; do j = 1, 3; do i = 1, 2
    n = k - 1 + 2 * (i - 1) + 4 * (j - 1)
    if (r3(i, j, k) /= merge(t(min(n + 1, 3), 1), -1 - modulo(n - 3, 2), n < 3)) stop 90
  end do; end do; end do
  if (size(cshift(t(:, 1:0), 1, 1)) /= 0 .or. size(pack(t(1:0, :), mt(1:0, :))) /= 0 .or. size(spread(t(1:0, 1), 2, 4)) /= 0) stop 91
contains
  integer function pack_one(k)
    integer, intent(in) :: k
    integer :: m
    m = 0
    do pack_one = 0, 19
      if (mt(1 + modulo(pack_one, 4), 1 + pack_one / 4)) m = m + 1
      if (m == k) exit
    end do
    pack_one = t(1 + modulo(pack_one, 4), 1 + pack_one / 4)
  end function
end program
