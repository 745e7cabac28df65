! Expected values of the numeric-model intrinsics as GNU Fortran computes
! them, for the cases where the library follows the standard model.  Run
!   gfortran -ffree-line-length-none gen_model.f90 -o gen && ./gen > ../gfortran_model.inc
! in this folder to regenerate the test data.
module out
  implicit none
contains
  function hex(b, n) result(s)
    integer(1), intent(in) :: b(:)
    integer, intent(in) :: n
    character(len=2 * n) :: s
    integer :: i
    do i = 1, n  ! most significant byte first
      write (s(2 * i - 1:2 * i), '(Z2.2)') b(n + 1 - i)
    end do
  end function
  subroutine line1(name, kind, x, nx, r, nr)  ! no second argument
    character(*), intent(in) :: name
    integer, intent(in) :: kind, nx, nr
    integer(1), intent(in) :: x(:), r(:)
    call line2(name, kind, x, nx, x, 0, r, nr)
  end subroutine
  subroutine line2(name, kind, x, nx, y, ny, r, nr)
    character(*), intent(in) :: name
    integer, intent(in) :: kind, nx, ny, nr
    integer(1), intent(in) :: x(:), y(:), r(:)
    write (*, '(3A,I0,7A)') '{"', name, '", ', kind, ', "', hex(x, nx), '", "', hex(y, ny), '", "', hex(r, nr), '"},'
  end subroutine
  subroutine linei(name, kind, x, nx, i, r, nr)
    character(*), intent(in) :: name
    integer, intent(in) :: kind, nx, i, nr
    integer(1), intent(in) :: x(:), r(:)
    write (*, '(3A,I0,3A,I0,3A)') '{"', name, '", ', kind, ', "', hex(x, nx), '", "', i, '", "', hex(r, nr), '"},'
  end subroutine
end module

subroutine kind4
  use out
  integer, parameter :: wp = 4, nb = 4
  include 'model_block.inc'
end subroutine
subroutine kind8
  use out
  integer, parameter :: wp = 8, nb = 8
  include 'model_block.inc'
end subroutine
subroutine kind10
  use out
  integer, parameter :: wp = 10, nb = 10
  include 'model_block.inc'
end subroutine
subroutine kind16
  use out
  integer, parameter :: wp = 16, nb = 16
  include 'model_block.inc'
end subroutine

subroutine integers
  use out
  integer :: k
  integer, parameter :: a(7) = [7, -7, 6, -7, 100, -100, 5], p(7) = [-3, 3, -3, -3, 7, 7, 0]
  do k = 1, 6  ! MODULO with P = 0 is not defined in the language
    call line2('moduloi', 1, transfer(int(a(k), 1), [0_1]), 1, transfer(int(p(k), 1), [0_1]), 1, &
               transfer(modulo(int(a(k), 1), int(p(k), 1)), [0_1]), 1)
    call line2('moduloi', 2, transfer(int(a(k), 2), [0_1]), 2, transfer(int(p(k), 2), [0_1]), 2, &
               transfer(modulo(int(a(k), 2), int(p(k), 2)), [0_1]), 2)
    call line2('moduloi', 4, transfer(a(k), [0_1]), 4, transfer(p(k), [0_1]), 4, &
               transfer(modulo(a(k), p(k)), [0_1]), 4)
    call line2('moduloi', 8, transfer(int(a(k), 8) * 3000000000_8, [0_1]), 8, transfer(int(p(k), 8), [0_1]), 8, &
               transfer(modulo(int(a(k), 8) * 3000000000_8, int(p(k), 8)), [0_1]), 8)
  end do
end subroutine

program gen
  call kind4
  call kind8
  call kind10
  call kind16
  call integers
end program
