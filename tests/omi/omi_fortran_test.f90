! Calls every conversion as a Fortran program does and compares what comes back.
program omi_fortran_test
    use, intrinsic :: iso_c_binding
    use omi_fortran
    implicit none
    character(4) :: names(2) = ["ABCD", "EF  "]
    character(6) :: filled = "######"
    character(kind=c_char), target :: out(80)
    type(c_ptr) :: list

    call omi_fortranFileNameConvert(out, 5, "ABCDEFG", 7)
    call expect(c_loc(out), "ABCD  ")
    call omi_fortranStringConvert(out, names, 7)
    call expect(c_loc(out), "ABCDEF")
    list = omi_fortranStringListConvert(2, names, len(names))
    call expect(element(2), "EF    ")
    call omi_fortranStringListFree(2, list)
    list = omi_fortranStringVarListConvert(2, 3, names, len(names))
    call expect(element(1), "AB    ")
    call omi_fortranStringListFree(2, list)

contains

    subroutine expect(text, expected)
        type(c_ptr), value :: text
        character(6), intent(in) :: expected
        call omi_fortranStringEnblank(filled, len(filled), text)
        if (filled == expected) return
        print '(5a)', "'", filled, "' instead of '", expected, "'"
        error stop 1
    end subroutine

    function element(i)
        integer, intent(in) :: i
        type(c_ptr) :: element
        type(c_ptr), pointer :: elements(:)
        call c_f_pointer(list, elements, [2])
        element = elements(i)
    end function
end program
