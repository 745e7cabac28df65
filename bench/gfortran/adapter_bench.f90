! The GNU Fortran adapter's benchmark: an ordinary gfortran program timing
! MATMUL, SUM(A, DIM=2), PACK and CSHIFT on large arrays (best of three, wall
! seconds).  run.sh runs it on libgfortran alone and with the adapter.
program adapter_bench
  implicit none
  integer, parameter :: n = 2000, big = 4000, len = 10000000
  real(8), allocatable :: a(:,:), b(:,:), c(:,:), x(:,:), y(:,:), s(:), v(:), p(:)
  integer :: shift = 1, two = 2  ! run-time values: the calls reach the runtime
  allocate (a(n, n), b(n, n), x(big, big), v(len))
  call random_number(a)
  call random_number(b)
  call random_number(x)
  call random_number(v)
  call time('MATMUL REAL(8) 2000', 1)
  call time('SUM(A, DIM=2) 4000x4000 REAL(8)', 2)
  call time('PACK 10^7 REAL(8), 50% MASK', 3)
  call time('CSHIFT(A, 1, DIM=2) 4000x4000 REAL(8)', 4)
  ! keep the results alive
  if (c(1, 1) < 0 .or. s(1) < 0 .or. size(p) < 0 .or. y(1, 1) < 0) print *, 'impossible'
contains
  subroutine time(name, op)
    character(*), intent(in) :: name
    integer, intent(in) :: op
    integer(8) :: t0, t1, rate
    real(8) :: best
    integer :: k
    best = huge(best)
    do k = 1, 3
      call system_clock(t0, rate)
      select case (op)
      case (1); c = matmul(a, b)
      case (2); s = sum(x, dim=two)
      case (3); p = pack(v, v > 0.5d0)
      case (4); y = cshift(x, shift, dim=2)
      end select
      call system_clock(t1)
      best = min(best, real(t1 - t0, 8) / rate)
    end do
    write (*, '(a, ";", f0.4)') name, best
  end subroutine
end program
