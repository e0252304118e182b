/** @file
 * Tidora's C interface: the initial sea surface of a tsunami from fault slip, as a library.
 *
 *     tidora_deform   displacement of the surface by rectangular fault elements, on grids or any points
 *     tidora_filter   Kajiura's filter: from the uplift of the sea floor to that of the sea surface
 *     tidora_shares   how the slip of an element is shared out over layers of time
 *     tidora_measure  extremes, volumes and energy of many fields, piece by piece
 *
 * Structures. Every one begins with its size, which the caller sets to sizeof: a library that knows more fields takes
 * the missing ones for 0, one that knows fewer refuses what it does not know unless it is 0. The rest shall be 0:
 *
 *     struct tidora_deform_options options = {sizeof options};
 *
 * Arrays belong to the caller and are neither kept nor freed. Fields of a grid are row-major, the southern row first:
 * the value of column ix, row iy, layer k stands at (k * ny + iy) * nx + ix. Arrays that are written must not overlap
 * others. Lengths are metres, angles degrees, times seconds.
 *
 * Errors. Every function returns a status; what was wrong with which argument stands in the caller's tidora_error,
 * which may be null. Arguments are checked before anything is written. Nothing is printed, no signal is touched, there
 * is no state between calls: every function may be called from any number of threads at once.
 *
 * Threads. The bits of a result depend neither on the number of threads nor on the way points are cut into calls. */
#ifndef TIDORA_TIDORA_H
#define TIDORA_TIDORA_H

#include <stddef.h>
#include <stdint.h>

/** Marks what the library shows. */
#define TIDORA_API __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

/* ---- status ---- */

/** What became of a call. */
enum tidora_status {
    TIDORA_OK = 0,        /**< done */
    TIDORA_INVALID = 1,   /**< an argument cannot be used: tidora_error says which and why */
    TIDORA_NO_MEMORY = 2, /**< nothing was written, or part of the results: do not use them */
    TIDORA_CANCELLED = 3, /**< the callback asked for it; part of the results may be written */
    TIDORA_FAILED = 4     /**< a fault of the library or of the system */
};

/** What was wrong, filled by a function that fails. */
struct tidora_error {
    size_t size;       /**< sizeof(struct tidora_error) */
    char argument[64]; /**< dotted name of the argument, "options.frame" say; empty where none is to blame */
    char message[448]; /**< what was wrong with it, in English, without a full stop */
};

/** A status as words: "an argument cannot be used" and so on; never null. */
TIDORA_API const char* tidora_status_text(int status);

/** Version of the library, "1.1.0" say. */
TIDORA_API const char* tidora_version(void);

/** Called a few times a second, always from the thread that called the library, with a fraction from 0 to 1 that never
 * falls. A value other than 0 stops the work: the function then returns TIDORA_CANCELLED, within a second. */
typedef int (*tidora_progress)(double fraction, void* user);

/* ---- what slips ---- */

/** A rectangular element. Its reference point is the start of the upper edge: looking along strike, the near end. */
struct tidora_element {
    double x;           /**< reference point, m, or degrees east */
    double y;           /**< m, or degrees north */
    double base_offset; /**< depth of the upper edge below sea level, m */
    double depth;       /**< depth of the upper edge below the sea floor, m: counts with TIDORA_DEPTH_PROGRAM and one
                           element */
    double strike;      /**< degrees clockwise from north */
    double dip;         /**< degrees, downward to the right of the strike direction */
    double rake;        /**< degrees: 0 left-lateral, 90 reverse */
    double length;      /**< along strike, m, at least 0 */
    double width;       /**< down dip, m, at least 0 */
    double slip;        /**< m; exactly 0 adds nothing */
};

/* ---- where ---- */

/** How the nodes of a field lie. */
enum tidora_layout {
    TIDORA_GRID = 1,  /**< nodes at every x of `x` and every y of `y` */
    TIDORA_POINTS = 2 /**< node n at x[n], y[n] */
};

/** Where a displacement is wanted. */
struct tidora_nodes {
    size_t size;             /**< sizeof(struct tidora_nodes) */
    int32_t layout;          /**< enum tidora_layout */
    int32_t reserved;        /**< 0 */
    size_t nx;               /**< columns of a grid, or number of points */
    size_t ny;               /**< rows of a grid; 1 for points */
    const double* x;         /**< nx values, m or degrees; those of a grid increase */
    const double* y;         /**< ny values of a grid, which increase; nx of points */
    const float* topography; /**< nx * ny, m, negative below sea level; may be null where nothing needs it */
};

/* ---- deformation ---- */

/** How a node becomes metres east and north of the reference point of an element. */
enum tidora_frame {
    TIDORA_FRAME_PLANE = 1, /**< metres, as they are */
    TIDORA_FRAME_GLOBE = 2, /**< degrees: true distance and direction on GRS80 about each element's reference point */
    TIDORA_FRAME_UTM = 3    /**< degrees: the UTM zone of each element, strike from grid north, as the program */
};

/** Where the elastic half-space begins. */
enum tidora_depth {
    TIDORA_DEPTH_DATUM = 1,  /**< the half-space begins at sea level, the upper edge lies at base_offset */
    TIDORA_DEPTH_FLOOR = 2,  /**< at the sea floor of each node, the upper edge lies max(0, topography + base_offset)
                                below it */
    TIDORA_DEPTH_PROGRAM = 3 /**< as the program: one element by its `depth`, several as FLOOR, and the depth of the
                                centre of a far element is that of the node evaluated before */
};

/** How a displacement is computed. */
struct tidora_deform_options {
    size_t size;               /**< sizeof(struct tidora_deform_options) */
    int32_t frame;             /**< enum tidora_frame */
    int32_t depth;             /**< enum tidora_depth */
    double tolerance;          /**< m, at least 0: far elements are point sources, farther ones nothing. Up to 1e-5: the
                                  finite source everywhere */
    size_t tolerance_elements; /**< among how many the tolerance is shared out; 0: as many as there are */
    double min_depth;          /**< m: the slope term counts where the sea floor is deeper */
    double spacing;            /**< of the grid, for the slope term; 0: that of its axes */
    int32_t threads;           /**< 0: OMP_NUM_THREADS, or as many as the process has cores */
    int32_t reserved;          /**< 0 */
    tidora_progress progress;  /**< may be null */
    void* user;                /**< handed to it */
};

/** Layers in time and what of each element's slip falls into them. */
struct tidora_layers {
    size_t size;         /**< sizeof(struct tidora_layers) */
    size_t count;        /**< 0: one layer with all slip, `shares` null */
    const float* shares; /**< count * elements, layer by layer */
};

/** Where results go: layers * ny * nx values each, or null for what is not wanted. */
struct tidora_displacement {
    size_t size; /**< sizeof(struct tidora_displacement) */
    float* uz;   /**< uplift, m */
    float* ue; /**< displacement to the east at the node, m; of the plane, or of the zone's grid, with PLANE and UTM */
    float* un; /**< to the north */
    float* slope; /**< uplift -(ue dh/de + un dh/dn) of the water over a sloping floor h, m: of grids with topography
                     whose axes are equally spaced within a thousandth, with PLANE and UTM both alike. Slopes are per
                     metre, but with UTM per unit of the grid, as the program's */
};

/** Displacement of the surface of an elastic half-space, Okada (1985, 1992). Elements are summed at every node in their
 * order, in single precision.
 *
 * INVALID: a pointer, size, enumeration or count that cannot be; numbers that are not finite among elements, axes,
 * shares or topography; sizes below 0; latitudes beyond 90 degrees; axes that do not increase; what the depth or the
 * slope term needs and is not there; with DATUM an upper edge above the surface. */
TIDORA_API int tidora_deform(const struct tidora_element* elements, size_t element_count,
                             const struct tidora_nodes* nodes, const struct tidora_layers* layers,
                             const struct tidora_deform_options* options, const struct tidora_displacement* out,
                             struct tidora_error* error);

/* ---- layers in time ---- */

/** How slip is shared out over layers in time. */
enum tidora_sharing {
    TIDORA_SHARE_INTERVALS = 1, /**< the program's: interval k starts at times[2 k] and lasts times[2 k + 1]; they may
                                   overlap; start and length 0 take everything */
    TIDORA_SHARE_WINDOWS = 2 /**< window k from times[k] to before times[k + 1], which increase: count + 1 times. What
                                lies before the first goes into the first, what lies after the last into the last */
};

/** Shares out slip: shares[k * element_count + n] is the part of element n, which slips evenly from lag[n] for
 * duration[n], in layer k. */
TIDORA_API int tidora_shares(int32_t sharing, const double* times, size_t count, const double* lag,
                             const double* duration, size_t element_count, float* shares, struct tidora_error* error);

/* ---- Kajiura's filter ---- */

/** What the axes of a field are in. */
enum tidora_coordinates {
    TIDORA_PLANE = 1,     /**< m */
    TIDORA_GEOGRAPHIC = 2 /**< degrees */
};

/** A grid of equal spacing: column ix at west + ix * spacing, row iy at south + iy * spacing. */
struct tidora_field_grid {
    size_t size;    /**< sizeof(struct tidora_field_grid) */
    size_t nx;      /**< columns */
    size_t ny;      /**< rows */
    double west;    /**< first column, m or degrees */
    double south;   /**< first row */
    double spacing; /**< of both axes */
};

/** Which weights the filter has. */
enum tidora_kernel {
    TIDORA_KERNEL_CONVERGED = 1, /**< the sum of Kajiura's series, weights that sum to one, true distances on degrees */
    TIDORA_KERNEL_PROGRAM = 2    /**< the program's, bit for bit: eleven terms, distances in units of the grid */
};

/** How an uplift is filtered. */
struct tidora_filter_options {
    size_t size;                            /**< sizeof(struct tidora_filter_options) */
    int32_t coordinates;                    /**< enum tidora_coordinates, of both grids */
    int32_t kernel;                         /**< enum tidora_kernel */
    int32_t threads;                        /**< as of the deformation */
    int32_t reserved;                       /**< 0 */
    const struct tidora_field_grid* parent; /**< of a larger field that is taken outside of the grid; null: 0 there */
    const float* parent_uplift;             /**< layers * parent->ny * parent->nx, m */
    tidora_progress progress;               /**< may be null */
    void* user;                             /**< handed to it */
};

/** Smooths the uplift of the sea floor into that of the sea surface, Kajiura (1963). Nodes at -10 m and above keep
 * their value; their uplift is sampled like any other.
 *
 * topography: ny * nx, m, negative below sea level. uplift, surface: layers * ny * nx, m.
 *
 * INVALID: as above; numbers that are not finite among uplift or topography, with the converged kernel. */
TIDORA_API int tidora_filter(const struct tidora_field_grid* grid, const float* topography, size_t layers,
                             const float* uplift, const struct tidora_filter_options* options, float* surface,
                             struct tidora_error* error);

/* ---- figures of fields ---- */

/** Figures of one field, gathered piece by piece. Set highest_at to -1 before the first piece: the rest then begins
 * anew. */
struct tidora_figures {
    float highest;      /**< m */
    float lowest;       /**< m */
    int64_t highest_at; /**< number of its node; of equal values the lowest number */
    int64_t lowest_at;  /**< likewise */
    double raised;      /**< sum of height times area above 0, m3 */
    double lowered;     /**< the same below 0, positive, m3 */
    double squares;     /**< sum of the squared height times the area, m4: times density and gravity and halved,
                           the potential energy */
};

/** Adds some nodes of several fields to their figures: the height of field k at node i stands at heights[k * stride +
 * i], stride >= nodes; areas[i]: of its cell, m2; first: the number of the first node, the others count on. A height
 * that is not a number leaves squares not a number. The bits depend on how nodes are cut into pieces. */
TIDORA_API int tidora_measure(size_t fields, size_t nodes, const float* heights, size_t stride, const double* areas,
                              int64_t first, struct tidora_figures* figures, struct tidora_error* error);

#ifdef __cplusplus
}
#endif

#endif
