// SPDX-License-Identifier: MIT
#include "support/sha256.h"

#include <array>
#include <bit>
#include <cmath>
#include <vector>

namespace {

using Words = std::array<z32u, 8>;

// The first 32 bits of the fractions of the roots of the first primes.
struct Constants {
  Words start{};                  // square roots
  std::array<z32u, 64> rounds{};  // cube roots

  Constants() {
    const auto fraction = [](double root) {
      return static_cast<z32u>((root - std::floor(root)) * 0x1p32);
    };
    zSize found = 0;
    for (int number = 2; found < rounds.size(); ++number) {
      bool prime = true;
      for (int divisor = 2; divisor < number; ++divisor) prime = prime && number % divisor != 0;
      if (!prime) continue;
      if (found < start.size()) start[found] = fraction(std::sqrt(number));
      rounds[found++] = fraction(std::cbrt(number));
    }
  }
};

void AddBlock(Words& state, const z8u* block, const std::array<z32u, 64>& rounds) {
  std::array<z32u, 64> w{};
  for (zSize i = 0; i < 64; ++i) w[i / 4] |= static_cast<z32u>(block[i]) << (24 - 8 * (i % 4));
  for (zSize i = 16; i < 64; ++i) {
    const z32u a = w[i - 15];
    const z32u b = w[i - 2];
    w[i] = w[i - 16] + w[i - 7] + (std::rotr(a, 7) ^ std::rotr(a, 18) ^ (a >> 3)) +
           (std::rotr(b, 17) ^ std::rotr(b, 19) ^ (b >> 10));
  }
  auto [a, b, c, d, e, f, g, h] = state;
  for (zSize i = 0; i < 64; ++i) {
    const z32u t1 = h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) +
                    ((e & f) ^ (~e & g)) + rounds[i] + w[i];
    const z32u t2 =
        (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
    h = g, g = f, f = e, e = d + t1, d = c, c = b, b = a, a = t1 + t2;
  }
  const Words added{a, b, c, d, e, f, g, h};
  for (zSize i = 0; i < state.size(); ++i) state[i] += added[i];
}

}  // namespace

std::string Sha256(std::span<const z8u> bytes) {
  static const Constants constants;
  std::vector<z8u> padded(bytes.begin(), bytes.end());
  padded.push_back(0x80);
  padded.resize((padded.size() + 8 + 63) / 64 * 64);
  const z64u bits = z64u{bytes.size()} * 8;
  for (zSize i = 0; i < 8; ++i) padded[padded.size() - 1 - i] = static_cast<z8u>(bits >> (8 * i));

  Words state = constants.start;
  for (zSize i = 0; i < padded.size(); i += 64) AddBlock(state, &padded[i], constants.rounds);
  std::string text;
  for (const z32u word : state) {
    for (int shift = 28; shift >= 0; shift -= 4) text += "0123456789abcdef"[word >> shift & 15U];
  }
  return text;
}
