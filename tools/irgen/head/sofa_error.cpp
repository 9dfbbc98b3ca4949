#include "sofa_error.h"

#include <mysofa.h>

#include <cstring>

namespace sonivex_irgen {

std::string sofaErrorText(int error) {
    switch (error) {
        case MYSOFA_INTERNAL_ERROR:
            return "internal error of libmysofa";
        case MYSOFA_INVALID_FORMAT:
            return "invalid format";
        case MYSOFA_UNSUPPORTED_FORMAT:
            return "unsupported format";
        case MYSOFA_NO_MEMORY:
            return "out of memory";
        case MYSOFA_READ_ERROR:
            return "read error";
        case MYSOFA_INVALID_ATTRIBUTES:
            return "invalid attributes";
        case MYSOFA_INVALID_DIMENSIONS:
            return "invalid dimensions";
        case MYSOFA_INVALID_DIMENSION_LIST:
            return "invalid list of dimensions";
        case MYSOFA_INVALID_COORDINATE_TYPE:
            return "invalid type of coordinates";
        case MYSOFA_ONLY_EMITTER_WITH_ECI_SUPPORTED:
            return "unsupported emitter positions";
        case MYSOFA_ONLY_DELAYS_WITH_IR_OR_MR_SUPPORTED:
            return "unsupported dimensions of Data.Delay";
        case MYSOFA_ONLY_THE_SAME_SAMPLING_RATE_SUPPORTED:
            return "more than one sample rate";
        case MYSOFA_RECEIVERS_WITH_RCI_SUPPORTED:
        case MYSOFA_RECEIVERS_WITH_CARTESIAN_SUPPORTED:
            return "unsupported receiver positions";
        case MYSOFA_INVALID_RECEIVER_POSITIONS:
            return "invalid receiver positions";
        case MYSOFA_ONLY_SOURCES_WITH_MC_SUPPORTED:
            return "unsupported source positions";
        default:
            break;
    }
    if (error > 0 && error < MYSOFA_INVALID_FORMAT) return std::strerror(error);
    return "error " + std::to_string(error);
}

}  // namespace sonivex_irgen
