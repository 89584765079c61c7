! Calls every conversion as a Fortran program does and compares what comes back.
program omi_fortran_test
    use, intrinsic :: iso_c_binding
    use omi_fortran
    implicit none
    character(8) :: title = "AB"
    character(4) :: names(3) = ["ABCD", "EF  ", "    "]
    character(100) :: long = repeat("x", 100)
    character(6) :: filled = "######"
    character(kind=c_char), target :: out(80)
    type(c_ptr) :: list

    call omi_fortranStringConvert(out, long, len(long))
    call expect(text(out), repeat("x", 79))
    call omi_fortranFileNameConvert(out, 5, "ABCDEFG", 7)
    call expect(text(out), "ABCD")
    call omi_fortranStringConvert(out, title, len(title))
    call expect(text(out), "AB")
    call omi_fortranStringEnblank(filled, len(filled), c_loc(out))
    call expect(filled, "AB    ")
    call omi_fortranStringEnblank(filled, len(filled), c_null_ptr)
    call expect(filled, "      ")

    list = omi_fortranStringListConvert(3, names, len(names))
    call expect(element(1) // "," // element(2) // "," // element(3), "ABCD,EF,")
    call omi_fortranStringListFree(3, list)
    list = omi_fortranStringVarListConvert(3, 3, names, len(names))
    call expect(element(1) // "," // element(2) // "," // element(3), "AB,EF,")
    call omi_fortranStringListFree(3, list)

contains

    subroutine expect(actual, expected)
        character(*), intent(in) :: actual, expected
        if (actual == expected .and. len(actual) == len(expected)) return
        print '(5a)', "'", actual, "' instead of '", expected, "'"
        error stop 1
    end subroutine

    function text(chars)
        character(kind=c_char), intent(in) :: chars(:)
        character(:), allocatable :: text
        integer :: i
        text = ""
        do i = 1, size(chars)
            if (chars(i) == c_null_char) return
            text = text // chars(i)
        end do
    end function

    function element(i)
        integer, intent(in) :: i
        character(:), allocatable :: element
        type(c_ptr), pointer :: elements(:)
        character(kind=c_char), pointer :: chars(:)
        call c_f_pointer(list, elements, [3])
        call c_f_pointer(elements(i), chars, [80])
        element = text(chars)
    end function
end program
