! Tidora's C interface for Fortran 2018, whose optional arguments of C functions older compilers have too. Compile this
! file with your program and link libtidora.
! Types, constants and functions are those of tidora.h, which says what they mean; names of constants are the same.
!
!   type(tidora_deform_options) :: options
!   options%size = c_sizeof(options)      ! every type begins with its size; what is not set is 0
!
! Arrays: the first index of Fortran runs fastest, so that a field of a grid is uz(nx, ny) or uz(nx, ny, layers), with
! the southern row first. Pass arrays by c_loc(); they need the attribute target.
module tidora
    use, intrinsic :: iso_c_binding
    implicit none
    public

    enum, bind(c)
        enumerator :: TIDORA_OK = 0, TIDORA_INVALID, TIDORA_NO_MEMORY, TIDORA_CANCELLED, TIDORA_FAILED
    end enum
    enum, bind(c)
        enumerator :: TIDORA_GRID = 1, TIDORA_POINTS
    end enum
    enum, bind(c)
        enumerator :: TIDORA_FRAME_PLANE = 1, TIDORA_FRAME_GLOBE, TIDORA_FRAME_UTM
    end enum
    enum, bind(c)
        enumerator :: TIDORA_DEPTH_DATUM = 1, TIDORA_DEPTH_FLOOR, TIDORA_DEPTH_PROGRAM
    end enum
    enum, bind(c)
        enumerator :: TIDORA_SHARE_INTERVALS = 1, TIDORA_SHARE_WINDOWS
    end enum
    enum, bind(c)
        enumerator :: TIDORA_PLANE = 1, TIDORA_GEOGRAPHIC
    end enum
    enum, bind(c)
        enumerator :: TIDORA_KERNEL_CONVERGED = 1, TIDORA_KERNEL_PROGRAM
    end enum

    type, bind(c) :: tidora_error
        integer(c_size_t) :: size = 0
        character(kind=c_char) :: argument(64) = c_null_char
        character(kind=c_char) :: message(448) = c_null_char
    end type

    type, bind(c) :: tidora_element
        real(c_double) :: x = 0, y = 0, base_offset = 0, depth = 0, strike = 0, dip = 0, rake = 0
        real(c_double) :: length = 0, width = 0, slip = 0
    end type

    type, bind(c) :: tidora_nodes
        integer(c_size_t) :: size = 0
        integer(c_int32_t) :: layout = 0, reserved = 0
        integer(c_size_t) :: nx = 0, ny = 0
        type(c_ptr) :: x = c_null_ptr, y = c_null_ptr, topography = c_null_ptr
    end type

    type, bind(c) :: tidora_deform_options
        integer(c_size_t) :: size = 0
        integer(c_int32_t) :: frame = 0, depth = 0
        real(c_double) :: tolerance = 0
        integer(c_size_t) :: tolerance_elements = 0
        real(c_double) :: min_depth = 0, spacing = 0
        integer(c_int32_t) :: threads = 0, reserved = 0
        type(c_funptr) :: progress = c_null_funptr
        type(c_ptr) :: user = c_null_ptr
    end type

    type, bind(c) :: tidora_layers
        integer(c_size_t) :: size = 0, count = 0
        type(c_ptr) :: shares = c_null_ptr
    end type

    type, bind(c) :: tidora_displacement
        integer(c_size_t) :: size = 0
        type(c_ptr) :: uz = c_null_ptr, ue = c_null_ptr, un = c_null_ptr, slope = c_null_ptr
    end type

    type, bind(c) :: tidora_field_grid
        integer(c_size_t) :: size = 0, nx = 0, ny = 0
        real(c_double) :: west = 0, south = 0, spacing = 0
    end type

    type, bind(c) :: tidora_filter_options
        integer(c_size_t) :: size = 0
        integer(c_int32_t) :: coordinates = 0, kernel = 0, threads = 0, reserved = 0
        type(c_ptr) :: parent = c_null_ptr, parent_uplift = c_null_ptr
        type(c_funptr) :: progress = c_null_funptr
        type(c_ptr) :: user = c_null_ptr
    end type

    type, bind(c) :: tidora_figures
        real(c_float) :: highest = 0, lowest = 0
        integer(c_int64_t) :: highest_at = -1, lowest_at = -1
        real(c_double) :: raised = 0, lowered = 0, squares = 0
    end type

    interface
        function tidora_deform(elements, element_count, nodes, layers, options, out, error) bind(c) result(status)
            import
            type(tidora_element), intent(in) :: elements(*)
            integer(c_size_t), value :: element_count
            type(tidora_nodes), intent(in) :: nodes
            type(tidora_layers), intent(in), optional :: layers
            type(tidora_deform_options), intent(in) :: options
            type(tidora_displacement), intent(in) :: out
            type(tidora_error), intent(inout), optional :: error
            integer(c_int) :: status
        end function

        function tidora_shares(sharing, times, count, lag, duration, element_count, shares, error) bind(c) &
            result(status)
            import
            integer(c_int32_t), value :: sharing
            real(c_double), intent(in) :: times(*)
            integer(c_size_t), value :: count
            real(c_double), intent(in) :: lag(*), duration(*)
            integer(c_size_t), value :: element_count
            real(c_float), intent(out) :: shares(*)
            type(tidora_error), intent(inout), optional :: error
            integer(c_int) :: status
        end function

        function tidora_filter(grid, topography, layers, uplift, options, surface, error) bind(c) result(status)
            import
            type(tidora_field_grid), intent(in) :: grid
            real(c_float), intent(in) :: topography(*)
            integer(c_size_t), value :: layers
            real(c_float), intent(in) :: uplift(*)
            type(tidora_filter_options), intent(in) :: options
            real(c_float), intent(out) :: surface(*)
            type(tidora_error), intent(inout), optional :: error
            integer(c_int) :: status
        end function

        function tidora_measure(fields, nodes, heights, stride, areas, first, figures, error) bind(c) result(status)
            import
            integer(c_size_t), value :: fields, nodes
            real(c_float), intent(in) :: heights(*)
            integer(c_size_t), value :: stride
            real(c_double), intent(in) :: areas(*)
            integer(c_int64_t), value :: first
            type(tidora_figures), intent(inout) :: figures(*)
            type(tidora_error), intent(inout), optional :: error
            integer(c_int) :: status
        end function
    end interface

contains

    ! What went wrong, as one text: "options%frame: is none of the frames" with a dot for the percent sign.
    function tidora_text(error) result(text)
        type(tidora_error), intent(in) :: error
        character(len=:), allocatable :: text
        text = trimmed(error%argument)
        if (len(text) > 0) text = text//' '
        text = text//trimmed(error%message)
    end function

    pure function trimmed(letters) result(text)
        character(kind=c_char), intent(in) :: letters(:)
        character(len=:), allocatable :: text
        integer :: i
        text = ''
        do i = 1, size(letters)
            if (letters(i) == c_null_char) exit
            text = text//letters(i)
        end do
    end function

end module
