#include "drawing_library.h"

#include <new>
#include <stdexcept>
#include <string>

namespace sonivex_plotting {

void throwIfFailed(cairo_status_t status) {
    if (status == CAIRO_STATUS_SUCCESS) return;
    if (status == CAIRO_STATUS_NO_MEMORY) throw std::bad_alloc();
    throw std::runtime_error(std::string("cannot draw the picture: ") + cairo_status_to_string(status));
}

}  // namespace sonivex_plotting
