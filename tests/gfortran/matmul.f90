! MATMUL of every served kind against a hand-computed product: matrix x
! matrix, vector x matrix and matrix x vector over a reversed strided section
! of an array with lower bounds, allocatable results, empty K and M.  Entries
! are small integers, so every order of additions gives the exact result.
! LOGICAL(8) operands reach matmul_l4, which forwards them.
! serves: matmul_i1 matmul_i2 matmul_i4 matmul_i8 matmul_r4 matmul_r8 matmul_r10 matmul_r16
! serves: matmul_c4 matmul_c8+ matmul_c10 matmul_c16 matmul_l4+
! forwards: matmul_c8 matmul_l4
#include "kinds.inc"
#define MM(T, C, W, code) block; T, allocatable :: a(:,:), b(:,:), c(:,:), v(:), r(:); \
  allocate (a(-3:5, 0:3)); a = C(ia); b = C(ib); v = C(iv); \
  c = matmul(a(5:-3:-2, :), b); if (any(shape(c) /= [5, 3]) .or. any(c /= W(w))) stop code; \
  r = matmul(v, b); if (any(r /= W(wvm))) stop code + 1; \
  r = matmul(a(5:-3:-2, :), v); if (any(r /= W(wmv))) stop code + 2; \
  c = matmul(a(:, 1:0), b(1:0, :)); if (any(shape(c) /= [9, 3]) .or. any(c /= W(0 * ib(1, 1)))) stop code + 3; \
  c = matmul(a(1:0, :), b); if (any(shape(c) /= [0, 3])) stop code + 4; end block
program mm
  implicit none
  integer :: ia(-3:5, 0:3), ib(4, 3), iv(4), w(5, 3), wvm(3), wmv(5), i, j, k
  real(8) :: x(9 * 4 + 4 * 3 + 4)
  logical :: lw(5, 3)
  complex(8) :: ca(2, 2), cc(2, 2)
  call random_number(x)
  ia = reshape(int(9 * x(1:36)) - 4, [9, 4])
  ib = reshape(int(9 * x(37:48)) - 4, [4, 3])
  iv = int(9 * x(49:52)) - 4
  do j = 1, 3
    do i = 1, 5
      w(i, j) = sum([(ia(7 - 2 * i, k - 1) * ib(k, j), k = 1, 4)])
      lw(i, j) = any([(ia(7 - 2 * i, k - 1) > 0 .and. ib(k, j) > 0, k = 1, 4)])
    end do
    wvm(j) = sum([(iv(k) * ib(k, j), k = 1, 4)])
  end do
  wmv = [(sum([(ia(7 - 2 * i, k - 1) * iv(k), k = 1, 4)]), i = 1, 5)]
  MM(integer(1), I1, I1, 10)
  MM(integer(2), I2, I2, 20)
  MM(integer(4), int, int, 30)
  MM(integer(8), I8, I8, 40)
  MM(real(4), R4, R4, 50)
  MM(real(8), R8, R8, 60)
  MM(real(10), R10, R10, 70)
  MM(real(16), R16, R16, 80)
#define W4(x) cmplx(-3 * (x), 4 * (x), 4)
#define W8(x) cmplx(-3 * (x), 4 * (x), 8)
#define W10(x) cmplx(-3 * (x), 4 * (x), 10)
#define W16(x) cmplx(-3 * (x), 4 * (x), 16)
  MM(complex(4), C4, W4, 90)
  MM(complex(8), C8, W8, 100)
  MM(complex(10), C10, W10, 110)
  MM(complex(16), C16, W16, 120)
  ! an infinite complex operand goes to libgfortran
  ca = cmplx(1, 1, 8)
  ca(1, 1) = cmplx(1 / (x(1) - x(1)), 0d0, 8)
  cc = matmul(ca, ca)
  if (cc(2, 2) /= cmplx(0, 4, 8)) stop 130
  block
    logical(4) :: a4(-3:5, 0:3)
    logical(8) :: a8(-3:5, 0:3)
    logical(4), allocatable :: c4(:,:)
    logical(8), allocatable :: c8(:,:)
    a4 = ia > 0
    a8 = ia > 0
    c4 = matmul(a4(5:-3:-2, :), ib > 0)
    c8 = matmul(a8(5:-3:-2, :), logical(ib > 0, 8))
    if (any(c4 .neqv. lw) .or. any(c8 .neqv. lw)) stop 140
  end block
end program
