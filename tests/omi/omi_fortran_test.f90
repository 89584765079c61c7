! Calls every conversion as a Fortran program does and compares what comes back.
program omi_fortran_test
    use, intrinsic :: iso_c_binding
    use omi_fortran
    implicit none
    integer :: failures = 0

    call converts_blank_padded_texts
    call fills_fortran_texts
    call makes_lists
    if (failures > 0) error stop 1
    print '(a)', "all conversions give what they should"

contains

    subroutine check(holds, what)
        logical, intent(in) :: holds
        character(*), intent(in) :: what
        if (holds) return
        failures = failures + 1
        print '(2a)', "failed: ", what
    end subroutine

    ! What stands before the terminator.
    function c_text(chars) result(text)
        character(kind=c_char), intent(in) :: chars(:)
        character(:), allocatable :: text
        integer :: i
        text = ""
        do i = 1, size(chars)
            if (chars(i) == c_null_char) return
            text = text // chars(i)
        end do
        text = text // " without a terminator"
    end function

    function list_text(list, n, i) result(text)
        type(c_ptr), intent(in) :: list
        integer, intent(in) :: n, i
        character(:), allocatable :: text
        type(c_ptr), pointer :: elements(:)
        character(kind=c_char), pointer :: chars(:)
        call c_f_pointer(list, elements, [n])
        call c_f_pointer(elements(i), chars, [80])
        text = c_text(chars)
    end function

    subroutine converts_blank_padded_texts
        character(8) :: title = "AB"
        character(100) :: long = repeat("x", 100)
        character(kind=c_char) :: out(80)
        call omi_fortranStringConvert(out, title, len(title))
        call check(c_text(out) == "AB" .and. len(c_text(out)) == 2, "blanks are trimmed")
        call omi_fortranStringConvert(out, long, len(long))
        call check(len(c_text(out)) == 79, "long texts are cut to 79 characters")
        call omi_fortranFileNameConvert(out, 5, "ABCDEFG", 7)
        call check(c_text(out) == "ABCD", "file names are cut to the buffer")
    end subroutine

    subroutine fills_fortran_texts
        character(6) :: text
        character(kind=c_char), target :: source(3) = ["A", "B", c_null_char]
        text = "######"
        call omi_fortranStringEnblank(text, len(text), c_loc(source))
        call check(text == "AB    ", "the rest is blank")
        text = "######"
        call omi_fortranStringEnblank(text, len(text), c_null_ptr)
        call check(text == "      ", "no text gives blanks")
    end subroutine

    subroutine makes_lists
        character(4) :: names(3) = ["ABCD", "EF  ", "    "]
        type(c_ptr) :: list
        list = omi_fortranStringListConvert(3, names, len(names))
        call check(c_associated(list), "a list is made")
        call check(list_text(list, 3, 1) == "ABCD", "an element without blanks is terminated")
        call check(len(list_text(list, 3, 2)) == 2, "an element is trimmed")
        call check(len(list_text(list, 3, 3)) == 0, "a blank element is empty")
        call omi_fortranStringListFree(3, list)
        list = omi_fortranStringVarListConvert(3, 3, names, len(names))
        call check(list_text(list, 3, 1) == "AB", "elements are cut to the size given")
        call omi_fortranStringListFree(3, list)
    end subroutine
end program
