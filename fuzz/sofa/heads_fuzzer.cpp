// Records of measured heads as the library that parses the files hands them over, with dimensions and arrays
// that need not match. The input gives the dimensions and the length of each array, then the numbers, which
// every array repeats.

#include <mysofa.h>

#include <bit>
#include <cstdint>
#include <vector>

#include "sofa_file.h"
#include "sound_head.h"
#include "support/byte_stream.h"

namespace {

using fuzz::ByteStream;

/** A dimension: usual ones, small ones and any. */
unsigned dimension(ByteStream& stream, unsigned usual) {
    const int kind = stream.byte();
    if (kind < 0x80) return usual;
    return kind < 0xF0 ? static_cast<unsigned>(kind) & 15U : static_cast<unsigned>(stream.number());
}

/** The numbers of one array, or none although there should be some. */
class Array {
  public:
    /** @param wanted the length that the dimensions ask for */
    Array(ByteStream& stream, std::uint64_t wanted, const std::vector<float>& numbers) {
        constexpr std::uint64_t kLongest = 40000;
        const int kind = stream.byte();
        auto length = static_cast<std::size_t>(std::min(wanted, kLongest));
        if (kind >= 0x80 && kind < 0xC0) length = static_cast<std::size_t>(kind & 15);
        values_.resize(length);
        for (std::size_t i = 0; i < length; ++i) values_[i] = numbers[i % numbers.size()];
        has_values_ = kind < 0xF0;
    }

    /** The array borrows the numbers. Its length is the true one or, without values, anything. */
    MYSOFA_ARRAY get(std::uint64_t wanted) {
        MYSOFA_ARRAY array = {};
        array.elements = static_cast<unsigned>(has_values_ ? values_.size() : wanted);
        array.values = has_values_ ? values_.data() : nullptr;
        return array;
    }

  private:
    std::vector<float> values_;
    bool has_values_ = true;
};

/** Places the sources all around, so that some input passes every check. */
void layAround(MYSOFA_ARRAY& positions) {
    for (unsigned i = 0; i + 2 < positions.elements; i += 3) {
        const float angle = static_cast<float>(i) * 0.0327F;
        positions.values[i] = std::cos(angle);
        positions.values[i + 1] = std::sin(angle);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    ByteStream stream(bytes, size);
    MYSOFA_HRTF hrtf = {};
    hrtf.M = dimension(stream, 64);
    hrtf.R = dimension(stream, 2);
    hrtf.N = dimension(stream, 64);
    const int layout = stream.byte();
    const std::uint64_t responses = std::uint64_t{hrtf.M} * hrtf.R;
    const std::uint64_t delays = layout % 3 == 0 ? 0 : layout % 3 == 1 ? hrtf.R : responses;
    ByteStream kinds(bytes + std::min<std::size_t>(size, 4),
                     std::min<std::size_t>(size - std::min<std::size_t>(size, 4), 5));
    (void)stream.bytes(5);
    std::vector<float> numbers;
    for (int i = 0; i < 1000 && !stream.isEmpty(); ++i) numbers.push_back(stream.real());
    if (numbers.empty()) numbers.push_back(1.0F);

    Array ir(kinds, responses * hrtf.N, numbers);
    Array positions(kinds, std::uint64_t{hrtf.M} * 3, numbers);
    Array receivers(kinds, 6, numbers);
    Array rate(kinds, 1, numbers);
    Array delay(kinds, delays, numbers);
    hrtf.DataIR = ir.get(responses * hrtf.N);
    hrtf.SourcePosition = positions.get(std::uint64_t{hrtf.M} * 3);
    hrtf.ReceiverPosition = receivers.get(6);
    hrtf.DataSamplingRate = rate.get(1);
    hrtf.DataDelay = delay.get(delays);
    if ((layout & 0x40) != 0 && hrtf.SourcePosition.values != nullptr) layAround(hrtf.SourcePosition);
    if ((layout & 0x80) != 0 && hrtf.DataSamplingRate.values != nullptr &&
        hrtf.DataSamplingRate.elements > 0) {
        hrtf.DataSamplingRate.values[0] = 48000.0F;
    }
    try {
        const auto head = sonivex_irgen::measurementsIn(hrtf);
        sonivex_irgen::checkHeadMeasurements(head);
        fuzz::requireSoundHead(head);
    } catch (const sonivex_irgen::UnusableHead& reason) {
        fuzz::require(reason.what()[0] != '\0', "a refusal tells its reason");
    }
    return 0;
}
