! A plain gfortran program; `make demo` runs it on libgfortran alone and then
! with the library's adapter preloaded, whose trace names the calls served.
program gfortran_demo
  implicit none
  real(8) :: a(3, 4), b(4, 2), c(3, 2)
  integer :: m(3, 4), i, k = 1
  a = reshape([(real(i, 8), i = 1, 12)], [3, 4])
  b = reshape([(real(13 - i, 8), i = 1, 8)], [4, 2])
  m = int(a) * (-1) ** int(a)
  c = matmul(a, b)
  print '(a, 6f7.1)', 'MATMUL(A, B)       ', c
  print '(a, 3f7.1)', 'SUM(A, DIM=K+1)    ', sum(a, dim=k + 1)
  print '(a, 4i7)', 'MAXLOC(M, DIM=1)   ', maxloc(m, dim=1)
  print '(a, 6f7.1)', 'PACK(A, A > 6)     ', pack(a, a > 6)
  print '(a, 12f5.1)', 'CSHIFT(A, K, DIM=2)', cshift(a, k, dim=2)
  print '(a, 6f7.1)', 'SPREAD(A(1,:2),1,3)', spread(a(1, 1:2), 1, 3)
end program
