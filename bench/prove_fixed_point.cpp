// SPDX-License-Identifier: MIT
//
// prove_fixed_point [COUNT]: compares the integer digits of reader/render/fixed_point.cpp with
// std::to_chars on COUNT texts (10^9 by default), and stops at the first that differs. The values
// are chosen where the two could part, each with 0 to 19 decimals. A value that the integers refuse
// must be 2^64 or more.
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

#include "reader/render/fixed_point.h"

namespace {

using Random = std::mt19937_64;  // the same values in every run

// A number of 0 to `most` bits, each length as likely.
double wholeNumber(Random& random, unsigned most) {
  return static_cast<double>((random() >> 1) >> (63 - random() % (most + 1)));
}

// `binades` of them from 2^first on, with `fraction` as the bits behind the point.
double inBinades(Random& random, int first, unsigned binades, std::uint64_t fraction) {
  const std::uint64_t exponentField = static_cast<std::uint64_t>(1023 + first) + random() % binades;
  return std::bit_cast<double>(exponentField << 52 | fraction >> 12);
}

struct Kind {
  const char* what;
  double (*make)(Random& random, unsigned decimals);
  bool besides = false;  // moved by up to two units in the last place
};

constexpr Kind kKinds[] = {
    {"any finite value", [](Random& r, unsigned) { return inBinades(r, -1023, 2047, r()); }},
    {"2^-140 to 2^65", [](Random& r, unsigned) { return inBinades(r, -140, 206, r()); }},
    {"values of few bits, some of them ties",
     [](Random& r, unsigned) { return inBinades(r, -30, 60, r() & 0xFFFF'0000'0000'0000); }},
    {"ties and neighbours",
     [](Random& r, unsigned decimals) {
       return std::ldexp(wholeNumber(r, 52 - decimals) * 2 + 1, -static_cast<int>(decimals) - 1);
     },
     true},
    {"as near to ties as a double comes",
     [](Random& r, unsigned decimals) {
       return (wholeNumber(r, 50) + 0.5) / std::pow(10.0, decimals);
     },
     true},
    {"whole numbers less half of the last decimal",
     [](Random& r, unsigned decimals) {
       return wholeNumber(r, 40) + 1 - 0.5 / std::pow(10.0, decimals);
     },
     true},
    {"amounts",
     [](Random& r, unsigned decimals) {
       return wholeNumber(r, 40) / std::pow(10.0, decimals % 5);
     }},
};

enum class Outcome { kEqual, kDifferent, kRefused };

Outcome compare(double value, int decimals) {
  char exact[qps::kExactFixedRoom];
  const char* end = qps::writeExactFixed(exact, value, decimals, qps::Separators::kNone);
  if (end == nullptr && std::fabs(value) >= 0x1p64) return Outcome::kRefused;
  char reference[qps::kFixedTextRoom];
  const char* referenceEnd = qps::writeFixed(reference, value, decimals);
  const std::string_view expected(reference, static_cast<std::size_t>(referenceEnd - reference));
  const auto isExpected = [&](const char* text, const char* textEnd) {
    const std::string_view shown(text, static_cast<std::size_t>(textEnd - text));
    if (shown == expected) return true;
    std::printf("%a with %d decimals: \"%.*s\", not \"%s\"\n", value, decimals,
                static_cast<int>(shown.size()), shown.data(), std::string(expected).c_str());
    return false;
  };
  if (!isExpected(exact, end == nullptr ? exact : end)) return Outcome::kDifferent;

  // The texts that most cells have are made in a shorter way.
  qps::WordText words;
  char shortText[qps::WordText::kWrittenBytes];
  const bool isShort = qps::appendShortFixed(words, value, decimals, qps::Separators::kNone);
  return !isShort || isExpected(shortText, words.write(shortText)) ? Outcome::kEqual
                                                                   : Outcome::kDifferent;
}

}  // namespace

int main(int argc, char** argv) {
  constexpr unsigned kMostDecimals = 19;
  const std::uint64_t count = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 1'000'000'000;
  Random random(20);
  unsigned long long compared[std::size(kKinds)] = {}, refused = 0;
  for (std::uint64_t done = 0; done < count;) {
    const std::size_t kind = (done + refused) % std::size(kKinds);
    const unsigned decimals = static_cast<unsigned>(random() % (kMostDecimals + 1));
    double value = kKinds[kind].make(random, decimals);
    const std::uint64_t bits = random();
    if (kKinds[kind].besides)
      value = std::bit_cast<double>(std::bit_cast<std::uint64_t>(value) + bits % 5 - 2);
    const Outcome outcome = compare(bits >> 63 != 0 ? -value : value, static_cast<int>(decimals));
    if (outcome == Outcome::kDifferent) return EXIT_FAILURE;
    ++(outcome == Outcome::kRefused ? refused : compared[kind]);
    if (outcome == Outcome::kEqual) ++done;
  }
  for (std::size_t kind = 0; kind < std::size(kKinds); ++kind)
    std::printf("%12llu  %s\n", compared[kind], kKinds[kind].what);
  std::printf("all equal; %llu values from 2^64 on left out\n", refused);
  return EXIT_SUCCESS;
}
