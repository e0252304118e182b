/* The initial sea surface of one fault plane off Japan on a grid in degrees, through Tidora's C interface:
 * displacement of the sea floor on the globe, then Kajiura's filter. Prints the highest and the lowest point.
 *
 *     cc uplift.c -ltidora -o uplift && ./uplift */
#include <stdio.h>
#include <stdlib.h>

#include <tidora/tidora.h>

enum { NX = 241, NY = 181 };

static double lon[NX], lat[NY];
static float topography[NY * NX], uplift[NY * NX], surface[NY * NX];

static void check(int status, const struct tidora_error* error) {
    if (status != TIDORA_OK) {
        fprintf(stderr, "%s: %s %s\n", tidora_status_text(status), error->argument, error->message);
        exit(1);
    }
}

static void print_extreme(const char* what, size_t at) {
    printf("%s %7.3f m at %.3f E, %.3f N\n", what, surface[at], lon[at % NX], lat[at / NX]);
}

int main(void) {
    const double spacing = 1.0 / 30.0;
    struct tidora_error error = {sizeof error, "", ""};

    /* A sea floor that falls from 500 m in the west to 6500 m in the east. */
    for (size_t ix = 0; ix < NX; ++ix) lon[ix] = 139.0 + spacing * (double)ix;
    for (size_t iy = 0; iy < NY; ++iy) lat[iy] = 35.0 + spacing * (double)iy;
    for (size_t at = 0; at < (size_t)NX * NY; ++at) topography[at] = -500.0F - 25.0F * (float)(at % NX);

    /* 200 km by 100 km, 5 m of slip up the dip; the upper edge lies 10 km below sea level. */
    const struct tidora_element plane = {.x = 143.9, .y = 37.2, .base_offset = 10.0e3, .strike = 200.0, .dip = 14.0,
                                         .rake = 90.0, .length = 200.0e3, .width = 100.0e3, .slip = 5.0};
    const struct tidora_nodes nodes = {.size = sizeof nodes, .layout = TIDORA_GRID, .nx = NX, .ny = NY,
                                       .x = lon, .y = lat, .topography = topography};
    const struct tidora_deform_options options = {.size = sizeof options, .frame = TIDORA_FRAME_GLOBE,
                                                  .depth = TIDORA_DEPTH_FLOOR};
    const struct tidora_displacement out = {.size = sizeof out, .uz = uplift};
    check(tidora_deform(&plane, 1, &nodes, NULL, &options, &out, &error), &error);

    const struct tidora_field_grid grid = {sizeof grid, NX, NY, lon[0], lat[0], spacing};
    const struct tidora_filter_options filter = {.size = sizeof filter, .coordinates = TIDORA_GEOGRAPHIC,
                                                 .kernel = TIDORA_KERNEL_CONVERGED};
    check(tidora_filter(&grid, topography, 1, uplift, &filter, surface, &error), &error);

    size_t highest = 0, lowest = 0;
    for (size_t at = 0; at < (size_t)NX * NY; ++at) {
        if (surface[at] > surface[highest]) highest = at;
        if (surface[at] < surface[lowest]) lowest = at;
    }
    printf("Tidora %s\n", tidora_version());
    print_extreme("highest", highest);
    print_extreme("lowest ", lowest);
    return 0;
}
