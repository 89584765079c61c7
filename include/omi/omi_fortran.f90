! Texts between Fortran and C: what omi_fortran.h describes, for Fortran callers. Compile this file
! with your own compiler and link KZMBasShared.
!
!     use omi_fortran
!     character(kind=c_char) :: name(80)
!     call omi_fortranStringConvert(name, title, len(title))
module omi_fortran
    use, intrinsic :: iso_c_binding, only: c_char, c_int, c_ptr
    implicit none
    private :: c_char, c_int, c_ptr

    interface
        ! `out` must hold 80 characters, or length + 1 if that is less.
        subroutine omi_fortranStringConvert(out, text, length) &
                bind(C, name="omi_fortranStringConvert")
            import :: c_char, c_int
            character(kind=c_char), intent(inout) :: out(*)
            character(kind=c_char), intent(in) :: text(*)
            integer(c_int), value :: length
        end subroutine

        subroutine omi_fortranFileNameConvert(out, size, text, length) &
                bind(C, name="omi_fortranFileNameConvert")
            import :: c_char, c_int
            character(kind=c_char), intent(inout) :: out(*)
            integer(c_int), value :: size
            character(kind=c_char), intent(in) :: text(*)
            integer(c_int), value :: length
        end subroutine

        ! `text` is the address of a C text, or c_null_ptr.
        subroutine omi_fortranStringEnblank(out, length, text) &
                bind(C, name="omi_fortranStringEnblank")
            import :: c_char, c_int, c_ptr
            character(kind=c_char), intent(inout) :: out(*)
            integer(c_int), value :: length
            type(c_ptr), value :: text
        end subroutine

        ! The address of an array of n C texts; c_null_ptr if memory is exhausted.
        function omi_fortranStringListConvert(n, texts, length) result(list) &
                bind(C, name="omi_fortranStringListConvert")
            import :: c_char, c_int, c_ptr
            integer(c_int), value :: n
            character(kind=c_char), intent(in) :: texts(*)
            integer(c_int), value :: length
            type(c_ptr) :: list
        end function

        function omi_fortranStringVarListConvert(n, size, texts, length) result(list) &
                bind(C, name="omi_fortranStringVarListConvert")
            import :: c_char, c_int, c_ptr
            integer(c_int), value :: n
            integer(c_int), value :: size
            character(kind=c_char), intent(in) :: texts(*)
            integer(c_int), value :: length
            type(c_ptr) :: list
        end function

        subroutine omi_fortranStringListFree(n, list) bind(C, name="omi_fortranStringListFree")
            import :: c_int, c_ptr
            integer(c_int), value :: n
            type(c_ptr), value :: list
        end subroutine
    end interface
end module omi_fortran
