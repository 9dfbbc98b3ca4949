// The drawing library's objects with owners, and its failures as exceptions. Only the sources of this room
// include it.
#pragma once

#include <cairo.h>

#include <memory>

namespace sonivex_plotting {

struct DrawingDeleter {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    void operator()(cairo_t* context) const { cairo_destroy(context); }
};
using Surface = std::unique_ptr<cairo_surface_t, DrawingDeleter>;
using DrawingContext = std::unique_ptr<cairo_t, DrawingDeleter>;

/** @throw std::bad_alloc if the library found no memory; std::runtime_error if anything else failed */
void throwIfFailed(cairo_status_t status);

}  // namespace sonivex_plotting
