! differential_driver.f90 - reference results for the construction tests,
! computed by GNU Fortran's own intrinsics.  Reads cases from standard input
! and writes, per case, one line: the element count, then the elements in
! array element order.  Arrays of rank 1 to 3 are held as rank-3 arrays
! padded with trailing extents of 1, which keeps array element order.
program differential_driver
  implicit none
  integer :: op, e(3), ios, r, dim, nc, flag, n, p, s, i
  integer :: shp(3), ord(3)
  integer, allocatable :: a(:,:,:), m(:,:,:), f(:,:,:), v(:), pad(:), sh(:,:), bd(:,:)
  integer, allocatable :: r1(:), r3(:,:,:), r4(:,:,:,:), r2(:,:)
  integer(2), allocatable :: t2(:)
  integer(8) :: t8
  integer :: sc, bsc

  do
    read(*, *, iostat=ios) op
    if (ios /= 0) exit
    select case (op)
    case (1)  ! RESHAPE: source extent, data, shape, pad, order
      read(*, *) s
      allocate(v(s)); read(*, *) v
      read(*, *) shp, flag
      if (flag == 1) then
        read(*, *) p; allocate(pad(p)); read(*, *) pad
      end if
      read(*, *) i, ord
      if (flag == 1 .and. i == 1) then
        r3 = reshape(v, shp, pad=pad, order=ord)
      else if (flag == 1) then
        r3 = reshape(v, shp, pad=pad)
      else if (i == 1) then
        r3 = reshape(v, shp, order=ord)
      else
        r3 = reshape(v, shp)
      end if
      call put3(r3)
      deallocate(v); if (allocated(pad)) deallocate(pad)
    case (2)  ! PACK: array, mask, optional vector
      call get3(a); call get3(m)
      read(*, *) flag
      if (flag == 1) then
        read(*, *) n; allocate(v(n)); read(*, *) v
        r1 = pack(a, m /= 0, v)
        deallocate(v)
      else
        r1 = pack(a, m /= 0)
      end if
      call put1(r1)
    case (3)  ! UNPACK: mask, vector, field (array or scalar)
      call get3(m)
      read(*, *) n; allocate(v(n)); read(*, *) v
      read(*, *) flag
      if (flag == 1) then
        read(*, *) sc
        r3 = unpack(v, m /= 0, sc)
      else
        call get3(f)
        r3 = unpack(v, m /= 0, f)
      end if
      call put3(r3); deallocate(v)
    case (4)  ! SPREAD: rank, source, dim, ncopies
      read(*, *) r
      if (r == 0) then
        read(*, *) sc, dim, nc
        r1 = spread(sc, 1, nc)
        call put1(r1)
      else
        call get3(a)
        read(*, *) dim, nc
        r4 = spread(a, dim, nc)
        write(*, '(*(i0,1x))') size(r4), r4
      end if
    case (5)  ! TRANSPOSE
      read(*, *) e(1:2)
      allocate(r2(e(1), e(2))); read(*, *) r2
      call put2(transpose(r2)); deallocate(r2)
    case (6, 7)  ! CSHIFT / EOSHIFT: array, dim, shift, boundary
      call get3(a)
      read(*, *) dim, flag
      if (flag == 1) then
        read(*, *) s
      else
        call get2(sh)
      end if
      bsc = 0
      if (op == 7) then
        read(*, *) i
        if (i == 1) then
          read(*, *) bsc
        else
          call get2(bd)
        end if
      end if
      if (op == 6 .and. flag == 1) then
        r3 = cshift(a, s, dim)
      else if (op == 6) then
        r3 = cshift(a, sh, dim)
      else if (flag == 1 .and. i == 1) then
        r3 = eoshift(a, s, bsc, dim)
      else if (flag == 1) then
        r3 = eoshift(a, s, bd, dim)
      else if (i == 1) then
        r3 = eoshift(a, sh, bsc, dim)
      else
        r3 = eoshift(a, sh, bd, dim)
      end if
      call put3(r3)
    case (8)  ! TRANSFER: source, mode, size
      read(*, *) s
      allocate(v(s)); read(*, *) v
      read(*, *) flag, n
      if (flag == 1) then
        t2 = transfer(v, [0_2])
        write(*, '(*(i0,1x))') size(t2), t2
      else if (flag == 2) then
        t2 = transfer(v, [0_2], n)
        write(*, '(*(i0,1x))') size(t2), t2
      else
        t8 = transfer(v, 0_8)
        write(*, '(*(i0,1x))') 1, t8
      end if
      deallocate(v)
    end select
  end do

contains

  subroutine get3(x)
    integer, allocatable, intent(inout) :: x(:,:,:)
    integer :: ex(3)
    if (allocated(x)) deallocate(x)
    read(*, *) ex
    allocate(x(ex(1), ex(2), ex(3)))
    read(*, *) x
  end subroutine

  subroutine get2(x)
    integer, allocatable, intent(inout) :: x(:,:)
    integer :: ex(2)
    if (allocated(x)) deallocate(x)
    read(*, *) ex
    allocate(x(ex(1), ex(2)))
    read(*, *) x
  end subroutine

  subroutine put1(x)
    integer, intent(in) :: x(:)
    write(*, '(*(i0,1x))') size(x), x
  end subroutine

  subroutine put2(x)
    integer, intent(in) :: x(:,:)
    write(*, '(*(i0,1x))') size(x), x
  end subroutine

  subroutine put3(x)
    integer, intent(in) :: x(:,:,:)
    write(*, '(*(i0,1x))') size(x), x
  end subroutine
end program
