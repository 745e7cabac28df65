! Expected results of the character intrinsics as GNU Fortran computes them.
! Run  gfortran gen_character.f90 -o gen && ./gen > ../gfortran_character.inc
! in this folder to regenerate the test data.  Each line:
!   {"function", "string", "second argument", back, "result"},
program gen
  implicit none
  character(len=12), parameter :: strings(9) = [character(len=12) :: 'ABCABC', 'FORTRAN', '  AB C  ', 'AAB', &
                                                'ABABAB', ' ', 'MISSISSIPPI', 'A B  C   D', '']
  integer, parameter :: lens(9) = [6, 7, 8, 3, 6, 3, 11, 10, 0]
  character(len=4), parameter :: subs(8) = [character(len=4) :: 'BC', 'AB', 'SSI', ' ', 'A', 'TR', 'XYZ', '']
  integer, parameter :: slens(8) = [2, 2, 3, 1, 1, 2, 3, 0]
  integer :: i, j, n, b
  do i = 1, size(strings)
    associate (s => strings(i)(1:lens(i)))
      write (*, '(3A,I0,A)') '{"len_trim", "', s, '", "", 0, "', len_trim(s), '"},'
      write (*, '(5A)') '{"adjustl", "', s, '", "", 0, "', adjustl(s), '"},'
      write (*, '(5A)') '{"adjustr", "', s, '", "", 0, "', adjustr(s), '"},'
      write (*, '(5A)') '{"trim", "', s, '", "", 0, "', trim(s), '"},'
      do n = 0, 2
        write (*, '(3A,I0,3A)') '{"repeat", "', s, '", "', n, '", 0, "', repeat(s, n), '"},'
      end do
      do j = 1, size(subs)
        associate (t => subs(j)(1:slens(j)))
          do b = 0, 1
            write (*, '(5A,I0,A,I0,A)') '{"index", "', s, '", "', t, '", ', b, ', "', index(s, t, b == 1), '"},'
            write (*, '(5A,I0,A,I0,A)') '{"scan", "', s, '", "', t, '", ', b, ', "', scan(s, t, b == 1), '"},'
            write (*, '(5A,I0,A,I0,A)') '{"verify", "', s, '", "', t, '", ', b, ', "', verify(s, t, b == 1), '"},'
          end do
        end associate
      end do
    end associate
  end do
end program
