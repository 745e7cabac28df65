! GNU Fortran's own MATMUL on explicit-shape arrays: the calls below reach
! the runtime library's matmul routines (front-end inlining is off for the
! peers, see bench/CMakeLists.txt).
module matmul_peers
  use iso_c_binding
  implicit none
contains
  subroutine gf_matmul_r8(m, n, k, a, b, c) bind(C, name="gf_matmul_r8")
    integer(c_int), value :: m, n, k
    real(c_double), intent(in) :: a(m, k), b(k, n)
    real(c_double), intent(out) :: c(m, n)
    c = matmul(a, b)
  end subroutine
  subroutine gf_matmul_r4(m, n, k, a, b, c) bind(C, name="gf_matmul_r4")
    integer(c_int), value :: m, n, k
    real(c_float), intent(in) :: a(m, k), b(k, n)
    real(c_float), intent(out) :: c(m, n)
    c = matmul(a, b)
  end subroutine
  subroutine gf_matmul_c16(m, n, k, a, b, c) bind(C, name="gf_matmul_c16")
    integer(c_int), value :: m, n, k
    complex(c_double_complex), intent(in) :: a(m, k), b(k, n)
    complex(c_double_complex), intent(out) :: c(m, n)
    c = matmul(a, b)
  end subroutine
  subroutine gf_matmul_i4(m, n, k, a, b, c) bind(C, name="gf_matmul_i4")
    integer(c_int), value :: m, n, k
    integer(c_int32_t), intent(in) :: a(m, k), b(k, n)
    integer(c_int32_t), intent(out) :: c(m, n)
    c = matmul(a, b)
  end subroutine
  subroutine gf_matmul_r10(m, n, k, a, b, c) bind(C, name="gf_matmul_r10")
    integer(c_int), value :: m, n, k
    real(10), intent(in) :: a(m, k), b(k, n)
    real(10), intent(out) :: c(m, n)
    c = matmul(a, b)
  end subroutine
  subroutine gf_matmul_r16(m, n, k, a, b, c) bind(C, name="gf_matmul_r16")
    integer(c_int), value :: m, n, k
    real(16), intent(in) :: a(m, k), b(k, n)
    real(16), intent(out) :: c(m, n)
    c = matmul(a, b)
  end subroutine
  subroutine gf_matvec_r8(m, k, a, x, y) bind(C, name="gf_matvec_r8")
    integer(c_int), value :: m, k
    real(c_double), intent(in) :: a(m, k), x(k)
    real(c_double), intent(out) :: y(m)
    y = matmul(a, x)
  end subroutine
  subroutine gf_vecmat_r8(n, k, x, b, y) bind(C, name="gf_vecmat_r8")
    integer(c_int), value :: n, k
    real(c_double), intent(in) :: x(k), b(k, n)
    real(c_double), intent(out) :: y(n)
    y = matmul(x, b)
  end subroutine
end module
