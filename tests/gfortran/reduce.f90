! Reductions against one hand model of runs (p, m, q): DIM over ranks 2-7
! (RESHAPEd views, every DIM), every kind on a reversed strided section of an
! array with lower bounds, array and scalar MASKs, empty extents, the
! whole-array MAXLOC/MINLOC, LOGICAL(1) and (2) MASKs (copied) and the
! cases libgfortran decides (all elements
! at the start value, nothing selected, BACK=.TRUE.).
! serves: sum_r8 msum_r8 ssum_r8 sum_i1 sum_i2 sum_i4 sum_i8 sum_r4 sum_r10 sum_r16 sum_c4 sum_c8 sum_c10 sum_c16
! serves: msum_i1 msum_r4 msum_c16 product_i1 product_i2 product_i4 product_i8 product_r8 product_r10 product_r16
! serves: minval_i1 minval_i2 minval_i4 minval_i8 mmaxval_i1 mmaxval_i4 mmaxval_i8 smaxval_i2 smaxval_i8
! serves: mmaxval_r4 mmaxval_r8+ mmaxval_r10 mmaxval_r16 smaxval_r4 smaxval_r8 smaxval_r16 maxval_r8+
! serves: mmaxloc1_4_i4+ minloc1_4_i1 minloc1_4_i2 minloc1_4_i4 minloc1_4_i8 sminloc1_4_i4
! serves: maxloc0_4_i2 minloc0_4_i4 mmaxloc0_4_i4 count_4_l any_l4 all_l4
! forwards: product_r4 product_c8 maxval_r8 mmaxval_r8 minval_r4 mmaxloc1_4_i8 maxloc0_4_i8 maxloc1_4_r8 smaxloc0_4_i4
#include "kinds.inc"
#define CMP(got, want, code) if (any(abs(reshape(real(got, 8), [p * q]) - want(1:p * q)) > 0)) stop code
#define ORDERED(C, code) CMP(max(real(maxval(C(tc), d, mc), 8), -128d0), wmx, code); CMP(min(real(minval(C(tc), d), 8), 127d0), wmn, code + 1); \
  CMP(maxloc(C(tc), d, mc), wl, code + 2); CMP(minloc(C(tc), d), wn, code + 3); CMP(maxval(C(tc), d, lt), wx, code + 4)
#define ARITH(C, code) CMP(sum(C(tc), d), ws, code + 5); CMP(sum(C(tc), d, mc), wsm, code + 6); CMP(product(C(tc), d), wp, code + 7)
program red
  implicit none
  integer, parameter :: s(7) = [2, 3, 1, 4, 2, 1, 3], n = 144
  real(8) :: x(n), ws(n), wsm(n), wp(n), wmx(n), wmn(n), wx(n), a3(-1:4, 0:5, 2:4), tc(3, 6, 3)
  integer :: ix(n), wl(n), wn(n), wc(n), wany(n), wall(n), k, d, p, m, q, i
  logical :: lm(n), mc(3, 6, 3), lt = .true., lf = .false.
  integer(8) :: big(2, 3) = -huge(0_8) - 1
  real(8) :: zz(2, 3), w3(3), zero = 0
  logical(1) :: m1(3, 6, 3)
  call random_number(x)
  lm = x > 0.4
  call random_number(x)
  ix = int(7 * x) - 3
  x = int(100 * x) - 50
  do k = 2, 7
    do d = 1, k
      p = product(s(1:d - 1)); m = s(d); q = product(s(d + 1:k))
      call model(x, ix, lm, p, m, q)
      select case (k)
#define RANKED(r) case (r); CMP(sum(reshape(x, s(1:r)), d), ws, 1); CMP(maxloc(reshape(ix, s(1:r)), d, reshape(lm, s(1:r))), wl, 2); \
  CMP(count(reshape(lm, s(1:r)), d), wc, 3); CMP(merge(1, 0, any(reshape(lm, s(1:r)), d)), wany, 4); CMP(merge(1, 0, all(reshape(lm, s(1:r)), d)), wall, 5)
      RANKED(2)
      RANKED(3)
      RANKED(4)
      RANKED(5)
      RANKED(6)
      RANKED(7)
      end select
    end do
  end do
  ! every kind along every DIM of a(4:-1:-2, 5:0:-1, :), MASKs, DIM results
  call random_number(a3)
  a3 = int(4 * a3) - 1
  tc = a3(4:-1:-2, 5:0:-1, :)
  mc = tc > 0
  do i = 1, 18  ! and one element of every run along every DIM
    mc(1 + modulo(modulo(i - 1, 6) + (i - 1) / 6, 3), 1 + modulo(i - 1, 6), 1 + (i - 1) / 6) = .true.
  end do
  m1 = mc
  p = 1; m = 3; q = 18
  do d = 1, 3
    call model(reshape(tc, [54]), int(reshape(tc, [54])), reshape(mc, [54]), p, m, q)
    CMP(sum(a3(4:-1:-2, 5:0:-1, :), d), ws, 10); CMP(sum(a3(4:-1:-2, 5:0:-1, :), d, mc), wsm, 11)
    CMP(sum(a3(4:-1:-2, 5:0:-1, :), d, lf), 0 * ws, 12); CMP(sum(a3(4:-1:-2, 5:0:-1, :), d, lt), ws, 13)
    CMP(maxloc(int(a3(4:-1:-2, 5:0:-1, :)), d, mc), wl, 14); CMP(minloc(int(a3(4:-1:-2, 5:0:-1, :)), d, lt), wn, 15)
    CMP(sum(a3(4:-1:-2, 5:0:-1, :), d, m1), wsm, 16); CMP(maxloc(int(a3(4:-1:-2, 5:0:-1, :)), d, logical(mc, 2)), wl, 17)
#define Z4(x) cmplx(x, 0, 4)
#define Z8(x) cmplx(x, 0, 8)
#define Z10(x) cmplx(x, 0, 10)
#define Z16(x) cmplx(x, 0, 16)
    ORDERED(I1, 20); ARITH(I1, 20)
    ORDERED(I2, 30); ARITH(I2, 30)
    ORDERED(int, 40); ARITH(int, 40)
    ORDERED(I8, 50); ARITH(I8, 50)
    ORDERED(R4, 60); ARITH(R4, 60)
    ORDERED(R8, 70); ARITH(R8, 70)
    ORDERED(R10, 80); ARITH(R10, 80)
    ORDERED(R16, 90); ARITH(R16, 90)
    ARITH(Z4, 100); ARITH(Z8, 110); ARITH(Z10, 120); ARITH(Z16, 130)
    p = p * m; m = 6 / d; q = q / m
  end do
  ! whole-array locations; empty and fully masked selections; the start value
  if (any(maxloc(ix(1:0)) /= 0) .or. any(maxloc(tc, mask=tc > 9) /= 0)) stop 140
  if (any(maxloc(int(tc, 2)) /= wloc(tc == tc, 1)) .or. any(minloc(int(tc)) /= wloc(tc == tc, -1))) stop 141
  if (any(maxloc(int(tc), mask=mc) /= wloc(mc, 1)) .or. any(maxloc(int(tc), mask=lf) /= 0)) stop 142
  if (any(maxloc(big) /= 1) .or. any(maxloc(big, 1, big > 0) /= 0) .or. any(maxloc(big, 1, big < 0) /= 1)) stop 143
  if (any(maxloc(tc, 2, back=.true.) /= 7 - maxloc(tc(:, 6:1:-1, :), 2))) stop 144
  ! REAL MAXVAL: a NaN first in a run, a run of -Inf and NaN, one of NaNs only
  zz = reshape([0 / zero, 1d0, -1 / zero, 0 / zero, 0 / zero, 0 / zero], [2, 3])
  w3 = maxval(zz, 1)
  if (w3(1) /= 1 .or. w3(2) > -huge(1d0) .or. w3(3) == w3(3) .or. any(maxval(zz(:, 2:2), 1) /= -1 / zero) .or. any(maxval(zz(2:1:-1, 2:2), 1, zz(2:1:-1, 2:2) < 1) /= -1 / zero)) stop 146
  if (sum(product(real(reshape(x(1:0), [0, 3]), 4), 2)) /= 0 .or. size(sum(reshape(x(1:0), [3, 0]), 1)) /= 0) stop 145
contains
  subroutine model(v, iv, lv, p, m, q)
    real(8), intent(in) :: v(*)
    integer, intent(in) :: iv(*), p, m, q
    logical, intent(in) :: lv(*)
    integer :: i, j, l, e, k
    do j = 0, q - 1
      do i = 0, p - 1
        e = 1 + i + p * j
        ws(e) = 0; wsm(e) = 0; wp(e) = 1; wmx(e) = -128; wmn(e) = 127; wx(e) = -128
        wl(e) = 0; wn(e) = min(m, 1); wc(e) = 0; wany(e) = 0; wall(e) = 1
        do l = 0, m - 1
          k = 1 + i + p * l + p * m * j
          ws(e) = ws(e) + v(k); wp(e) = wp(e) * v(k); wmn(e) = min(wmn(e), v(k)); wx(e) = max(wx(e), v(k))
          if (v(k) < v(1 + i + p * (wn(e) - 1) + p * m * j)) wn(e) = l + 1
          if (lv(k)) then
            wsm(e) = wsm(e) + v(k); wmx(e) = max(wmx(e), v(k)); wc(e) = wc(e) + 1; wany(e) = 1
            if (wl(e) == 0) wl(e) = l + 1
            if (iv(k) > iv(1 + i + p * (wl(e) - 1) + p * m * j)) wl(e) = l + 1
          else
            wall(e) = 0
          end if
        end do
      end do
    end do
  end subroutine
  ! first position of the largest (dir 1) or smallest (-1) selected element of tc
  function wloc(sel, dir) result(w)
    logical, intent(in) :: sel(3, 6, 3)
    integer, intent(in) :: dir
    integer :: w(3), i, j, l
    w = 0
    do l = 1, 3; do j = 1, 6; do i = 1, 3
      if (.not. sel(i, j, l)) cycle
      if (w(1) == 0) then; w = [i, j, l]; else if (dir * tc(i, j, l) > dir * tc(w(1), w(2), w(3))) then; w = [i, j, l]; end if
    end do; end do; end do
  end function
end program
