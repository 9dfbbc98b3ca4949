#include "sofa_head.h"

#include <mysofa.h>

#include <cmath>
#include <memory>
#include <stdexcept>

namespace response_quality {
namespace {

constexpr double kLongestDelay_samples = 4096.0;

struct Release {
    void operator()(MYSOFA_HRTF* file) const { mysofa_free(file); }
};
using File = std::unique_ptr<MYSOFA_HRTF, Release>;

File load(const std::string& path) {
    int error = MYSOFA_OK;
    File file(mysofa_load(path.c_str(), &error));
    if (file == nullptr) {
        throw std::runtime_error("cannot read \"" + path + "\": error " + std::to_string(error) +
                                 " of libmysofa");
    }
    if (mysofa_check(file.get()) != MYSOFA_OK || file->R != 2 || file->M == 0) {
        throw std::runtime_error("cannot use \"" + path + "\": it does not hold head responses of two ears");
    }
    mysofa_tocartesian(file.get());
    return file;
}

double delayOf_samples(const MYSOFA_HRTF& file, std::size_t direction, std::size_t receiver) {
    if (file.DataDelay.values == nullptr || file.DataDelay.elements == 0) return 0.0;
    // The file has one delay per receiver, or one per direction and receiver.
    return file.DataDelay.values[file.DataDelay.elements == 2 ? receiver : 2 * direction + receiver];
}

Signal responseOf(const MYSOFA_HRTF& file, std::size_t direction, std::size_t receiver) {
    const float* first = file.DataIR.values + (2 * direction + receiver) * file.N;
    const Signal response(first, first + file.N);
    // Only the difference between the ears counts.
    const double later_samples =
        delayOf_samples(file, direction, receiver) - delayOf_samples(file, direction, 1 - receiver);
    if (later_samples > kLongestDelay_samples) {
        throw std::runtime_error("the ears' delays differ by " + std::to_string(later_samples) + " samples");
    }
    return later_samples > 0.0 ? delayed(response, later_samples) : response;
}

std::array<double, 3> unitVector(const float* position) {
    const double length = std::hypot(position[0], position[1], position[2]);
    return {position[0] / length, position[1] / length, position[2] / length};
}

}  // namespace

MeasuredHead readMeasuredHead(const std::string& path) {
    const File file = load(path);
    // Positions have three coordinates; the left receiver is the one with the larger y.
    const std::size_t left = file->ReceiverPosition.values[1] > file->ReceiverPosition.values[4] ? 0 : 1;
    MeasuredHead head{file->DataSamplingRate.values[0], {}};
    for (std::size_t i = 0; i < file->M; ++i) {
        head.directions.push_back({unitVector(file->SourcePosition.values + 3 * i),
                                   {responseOf(*file, i, left), responseOf(*file, i, 1 - left)}});
    }
    return head;
}

}  // namespace response_quality
