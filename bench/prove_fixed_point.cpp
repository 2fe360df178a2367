// SPDX-License-Identifier: MIT
//
// prove_fixed_point [COUNT]: compares the integer road of reader/render/fixed_point.cpp with
// std::to_chars on COUNT texts (10^9 by default), and stops at the first that differs. The values
// are chosen where the roads could part: every binade, ties and the values beside them, and values
// that round to the next whole number, each with 0 to 19 decimals. A value that the integers refuse
// must be 2^64 or more.
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <string_view>

#include "reader/render/fixed_point.h"

namespace {

constexpr int kMostDecimals = 19;

// splitmix64: the same values in every run.
class Random {
 public:
  std::uint64_t next() {
    std::uint64_t z = state_ += 0x9E37'79B9'7F4A'7C15;
    z = (z ^ (z >> 30)) * 0xBF58'476D'1CE4'E5B9;
    z = (z ^ (z >> 27)) * 0x94D0'49BB'1331'11EB;
    return z ^ (z >> 31);
  }
  std::uint64_t below(std::uint64_t bound) { return next() % bound; }
  // A number of 0 to `most` bits, each length as likely.
  std::uint64_t ofUpTo(int most) {
    return (next() >> 1) >> (63 - below(static_cast<std::uint64_t>(most) + 1));
  }

 private:
  std::uint64_t state_ = 0;
};

double fromFields(std::uint64_t exponentField, std::uint64_t fraction) {
  return std::bit_cast<double>(exponentField << 52 | fraction >> 12);
}

double anyValue(Random& random, int) {
  return fromFields(random.below(2047), random.next());
}

// Of 2^-140 to 2^65, with whole and fractional parts of every size.
double nearbyValue(Random& random, int) {
  return fromFields(1023 - 140 + random.below(206), random.next());
}

// Sixteen or fewer significant bits: many of these have few digits, and some are ties.
double shortValue(Random& random, int) {
  return fromFields(1023 - 30 + random.below(60), random.next() & 0xFFFF'0000'0000'0000);
}

// Exactly in the middle of two decimals, and the values beside it.
double tie(Random& random, int decimals) {
  return std::ldexp(static_cast<double>(random.ofUpTo(52 - decimals) * 2 + 1), -decimals - 1);
}

// As near to the middle of two decimals as a double comes.
double nearTie(Random& random, int decimals) {
  return (static_cast<double>(random.ofUpTo(50)) + 0.5) / std::pow(10.0, decimals);
}

// A whole number less half of the last decimal.
double nearWhole(Random& random, int decimals) {
  return static_cast<double>(random.ofUpTo(40) + 1) - 0.5 / std::pow(10.0, decimals);
}

double amount(Random& random, int decimals) {
  return static_cast<double>(random.ofUpTo(40)) / std::pow(10.0, decimals % 5);
}

struct Kind {
  const char* what;
  double (*make)(Random& random, int decimals);
  bool besides;  // moved by up to two units in the last place
};

constexpr Kind kKinds[] = {
    {"any finite value", anyValue, false},
    {"2^-140 to 2^65", nearbyValue, false},
    {"values of few bits", shortValue, false},
    {"ties and neighbours", tie, true},
    {"near ties", nearTie, true},
    {"just below whole numbers", nearWhole, true},
    {"amounts", amount, false},
};

std::string_view textOf(const char* begin, const char* end) {
  return {begin, static_cast<std::size_t>(end - begin)};
}

enum class Outcome { kEqual, kDifferent, kRefused };

Outcome compare(double value, int decimals) {
  char exact[qps::kExactFixedRoom];
  const char* end = qps::writeExactFixed(exact, value, decimals, qps::Separators::kNone);
  if (end == nullptr && std::fabs(value) >= 0x1p64) return Outcome::kRefused;
  if (end == nullptr) end = exact;
  char reference[qps::kFixedTextRoom];
  const char* referenceEnd = qps::writeFixed(reference, value, decimals);
  const std::string_view expected = textOf(reference, referenceEnd);
  const auto isExpected = [&](std::string_view text) {
    if (text == expected) return true;
    std::printf("%a with %d decimals: \"%.*s\", not \"%.*s\"\n", value, decimals,
                static_cast<int>(text.size()), text.data(), static_cast<int>(expected.size()),
                expected.data());
    return false;
  };
  if (!isExpected(textOf(exact, end))) return Outcome::kDifferent;

  // The texts that most cells have come by a shorter road.
  qps::WordText words;
  if (!qps::appendShortFixed(words, value, decimals, qps::Separators::kNone))
    return Outcome::kEqual;
  char shortText[qps::WordText::kWrittenBytes];
  return isExpected(textOf(shortText, words.write(shortText))) ? Outcome::kEqual
                                                               : Outcome::kDifferent;
}

}  // namespace

int main(int argc, char** argv) {
  const std::uint64_t count = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 1'000'000'000;
  Random random;
  std::uint64_t compared[std::size(kKinds)] = {};
  std::uint64_t refused = 0;
  for (std::uint64_t done = 0; done < count;) {
    const std::size_t kind = (done + refused) % std::size(kKinds);
    const auto decimals = static_cast<int>(random.below(kMostDecimals + 1));
    double value = kKinds[kind].make(random, decimals);
    const std::uint64_t bits = random.next();
    if (kKinds[kind].besides) {
      value = std::bit_cast<double>(std::bit_cast<std::uint64_t>(value) + bits % 5 - 2);
    }
    const Outcome outcome = compare(bits >> 63 != 0 ? -value : value, decimals);
    if (outcome == Outcome::kDifferent) return EXIT_FAILURE;
    if (outcome == Outcome::kRefused) {
      ++refused;
      continue;
    }
    ++compared[kind];
    ++done;
  }
  for (std::size_t kind = 0; kind < std::size(kKinds); ++kind) {
    std::printf("%12llu  %s\n", static_cast<unsigned long long>(compared[kind]), kKinds[kind].what);
  }
  std::printf("%12llu  texts with 0 to %d decimals, all equal; %llu values from 2^64 on left out\n",
              static_cast<unsigned long long>(count), kMostDecimals,
              static_cast<unsigned long long>(refused));
  return EXIT_SUCCESS;
}
