! The uplift of the sea floor by one fault plane off Japan on the program's own grid, through Tidora's interface, as a
! tsunami code would ask for it: the grid is a Fortran array h(nx, ny) of depths below sea level, in degrees.
!
!     gfortran -c .../include/tidora/tidora.f90 && gfortran uplift.f90 tidora.o -ltidora -o uplift && ./uplift
program uplift_of_own_grid
    use, intrinsic :: iso_fortran_env, only: error_unit
    use tidora
    implicit none
    integer, parameter :: nx = 241, ny = 181
    real(c_double), parameter :: spacing = 1.0d0/30.0d0
    real(c_double), target :: lon(nx), lat(ny)
    real(c_float), target :: topography(nx, ny), uz(nx, ny), surface(nx, ny)
    real :: h(nx, ny)  ! depth of the water as the code has it, m, positive downward
    type(tidora_element) :: plane(1)
    integer :: i, at(2)

    do i = 1, nx
        lon(i) = 139.0d0 + spacing*(i - 1)
        h(i, :) = 500.0 + 25.0*(i - 1)
    end do
    do i = 1, ny
        lat(i) = 35.0d0 + spacing*(i - 1)
    end do
    topography = -h

    ! 200 km by 100 km, 5 m of slip up the dip; the upper edge lies 10 km below sea level.
    plane(1) = tidora_element(x=143.9d0, y=37.2d0, base_offset=10.0d3, strike=200.0d0, dip=14.0d0, rake=90.0d0, &
                              length=200.0d3, width=100.0d3, slip=5.0d0)
    call deform()
    call filter()

    at = maxloc(surface)
    print '(a, f8.3, a, f8.3, a, f7.3, a)', 'highest', surface(at(1), at(2)), ' m at ', lon(at(1)), ' E, ', &
        lat(at(2)), ' N'
    at = minloc(surface)
    print '(a, f8.3, a, f8.3, a, f7.3, a)', 'lowest ', surface(at(1), at(2)), ' m at ', lon(at(1)), ' E, ', &
        lat(at(2)), ' N'

contains

    subroutine deform()
        type(tidora_nodes) :: nodes
        type(tidora_deform_options) :: options
        type(tidora_displacement) :: out
        type(tidora_error) :: error
        error%size = c_sizeof(error)
        nodes = tidora_nodes(size=c_sizeof(nodes), layout=TIDORA_GRID, nx=nx, ny=ny, x=c_loc(lon), y=c_loc(lat), &
                             topography=c_loc(topography))
        options = tidora_deform_options(size=c_sizeof(options), frame=TIDORA_FRAME_GLOBE, depth=TIDORA_DEPTH_FLOOR)
        out = tidora_displacement(size=c_sizeof(out), uz=c_loc(uz))
        call check(tidora_deform(plane, 1_c_size_t, nodes, options=options, out=out, error=error), error)
    end subroutine

    subroutine filter()
        type(tidora_field_grid) :: grid
        type(tidora_filter_options) :: options
        type(tidora_error) :: error
        error%size = c_sizeof(error)
        grid = tidora_field_grid(c_sizeof(grid), nx, ny, lon(1), lat(1), spacing)
        options = tidora_filter_options(size=c_sizeof(options), coordinates=TIDORA_GEOGRAPHIC, &
                                        kernel=TIDORA_KERNEL_CONVERGED)
        call check(tidora_filter(grid, topography, 1_c_size_t, uz, options, surface, error), error)
    end subroutine

    subroutine check(status, error)
        integer(c_int), intent(in) :: status
        type(tidora_error), intent(in) :: error
        if (status == TIDORA_OK) return
        write (error_unit, '(a)') tidora_text(error)
        error stop 1
    end subroutine

end program
