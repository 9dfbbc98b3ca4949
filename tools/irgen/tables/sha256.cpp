#include "sha256.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace sonivex_irgen {
namespace {

constexpr std::size_t kBlockBytes = 64;

// Round constants: fractional parts of the cube roots of the first 64 primes.
constexpr std::array<std::uint32_t, 64> kRoundConstants{
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

// Initial state: fractional parts of the square roots of the first 8 primes.
using State = std::array<std::uint32_t, 8>;
constexpr State kStart{0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                       0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};

std::uint32_t bigEndianWord(std::string_view bytes, std::size_t at) {
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < 4; ++i) word = (word << 8) | static_cast<unsigned char>(bytes[at + i]);
    return word;
}

void addBlock(std::string_view block, State& state) {
    std::array<std::uint32_t, 64> w{};
    for (std::size_t i = 0; i < 16; ++i) w[i] = bigEndianWord(block, 4 * i);
    for (std::size_t i = 16; i < 64; ++i) {
        const std::uint32_t s0 = std::rotr(w[i - 15], 7) ^ std::rotr(w[i - 15], 18) ^ (w[i - 15] >> 3);
        const std::uint32_t s1 = std::rotr(w[i - 2], 17) ^ std::rotr(w[i - 2], 19) ^ (w[i - 2] >> 10);
        w[i] = w[i - 16] + s0 + w[i - 7] + s1;
    }
    auto [a, b, c, d, e, f, g, h] = state;
    for (std::size_t i = 0; i < 64; ++i) {
        const std::uint32_t s1 = std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25);
        const std::uint32_t t1 = h + s1 + ((e & f) ^ (~e & g)) + kRoundConstants[i] + w[i];
        const std::uint32_t s0 = std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22);
        const std::uint32_t t2 = s0 + ((a & b) ^ (a & c) ^ (b & c));
        h = g;
        g = f;
        f = e;
        e = d + t1;
        d = c;
        c = b;
        b = a;
        a = t1 + t2;
    }
    const State mixed{a, b, c, d, e, f, g, h};
    for (std::size_t i = 0; i < state.size(); ++i) state[i] += mixed[i];
}

}  // namespace

std::string sha256(std::string_view bytes) {
    State state = kStart;
    const std::size_t whole = bytes.size() - bytes.size() % kBlockBytes;
    for (std::size_t at = 0; at < whole; at += kBlockBytes) addBlock(bytes.substr(at, kBlockBytes), state);

    // Padding: a one bit, zeros, and the length in bits complete the last one or two blocks.
    std::string last(bytes.substr(whole));
    last.push_back('\x80');
    while (last.size() % kBlockBytes != kBlockBytes - 8) last.push_back('\0');
    const std::uint64_t bits = static_cast<std::uint64_t>(bytes.size()) * 8;
    for (int shift = 56; shift >= 0; shift -= 8) last.push_back(static_cast<char>((bits >> shift) & 0xFFU));
    for (std::size_t at = 0; at < last.size(); at += kBlockBytes) {
        addBlock(std::string_view(last).substr(at, kBlockBytes), state);
    }

    std::string digits;
    for (const std::uint32_t word : state) {
        for (int shift = 28; shift >= 0; shift -= 4)
            digits.push_back("0123456789abcdef"[(word >> shift) & 0xFU]);
    }
    return digits;
}

}  // namespace sonivex_irgen
