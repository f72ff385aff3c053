// lib/starts/limits.cpp - what a part may weigh, in whole numbers.
// SPDX-License-Identifier: MIT

#include "limits.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace kapris::engine::safe
{

__extension__ typedef __int128 Wide;

namespace
{

struct Decimal {
  std::int64_t digits; // below 10^17
  int exponent;        // of 10
};

struct Fraction {
  std::int64_t above, below;
};

} // namespace

// The shortest decimal that reads as the value: what the caller wrote, if that had up to 15 digits.
static Decimal DecimalOf(double value)
{
  char text[32] = "";
  Decimal decimal = {0, 0};
  bool behind = false; // the point

  std::to_chars(text, text + sizeof text - 1, value, std::chars_format::scientific);
  const char *at = text;
  for (; *at != '\0' && *at != 'e'; at++) {
    if (*at == '.') {
      behind = true;
      continue;
    }
    decimal.digits = 10 * decimal.digits + (*at - '0');
    decimal.exponent -= behind;
  }
  if (*at == 'e')
    decimal.exponent += static_cast<int>(std::strtol(at + 1, nullptr, 10));
  return decimal;
}

// decimal x whole, rounded; at most INT64_MAX.
static std::int64_t Times(Decimal decimal, std::int64_t whole, bool up)
{
  Wide product = Wide{decimal.digits} * whole;
  bool rest = false;

  for (; decimal.exponent > 0 && product > 0 && product <= INT64_MAX; decimal.exponent--)
    product *= 10;
  for (; decimal.exponent < 0 && product > 0; decimal.exponent++) {
    rest = rest || product % 10 != 0;
    product /= 10;
  }
  return static_cast<std::int64_t>(std::min<Wide>(product + (up && rest), INT64_MAX));
}

static std::int64_t Divide(Wide value, std::int64_t by, bool up)
{
  return static_cast<std::int64_t>(value / by + (up && value % by != 0));
}

// The fraction that a caller has divided out, such as 5/12 or 1/3: by its expansion in a continued fraction, the first
// that the value cannot be told from. {0, 0} if its terms would be too large to be meant.
static Fraction FractionOf(double value)
{
  constexpr double most = 0x1p26;
  double above[2] = {0.0, 1.0}, below[2] = {1.0, 0.0}, rest = value;

  for (;;) {
    const double whole = std::floor(rest),
                 next[2] = {whole * above[1] + above[0], whole * below[1] + below[0]};
    if (!(next[0] <= most && next[1] <= most))
      return {0, 0};
    if (std::fabs(next[0] / next[1] - value) <= value * 0x1p-52)
      return {static_cast<std::int64_t>(next[0]), static_cast<std::int64_t>(next[1])};
    above[0] = above[1];
    below[0] = below[1];
    above[1] = next[0];
    below[1] = next[1];
    rest = 1.0 / (rest - whole);
  }
}

// share x total, rounded up or down to a whole weight.
static std::int64_t WholeShare(std::int64_t total, Share share, bool up)
{
  constexpr std::int64_t written = 1000000000000000;

  if (share.fraction == 0.0)
    return Divide(total, share.nparts, up);
  const Decimal decimal = DecimalOf(share.fraction);
  const Fraction fraction = decimal.digits < written ? Fraction{0, 0} : FractionOf(share.fraction);
  return fraction.below > 0 ? Divide(Wide{fraction.above} * total, fraction.below, up)
                            : Times(decimal, total, up);
}

std::int64_t PartLimit(std::int64_t total, Share share, double epsilon)
{
  const std::int64_t whole = WholeShare(total, share, true);
  const Wide limit = Wide{whole} + Times(DecimalOf(epsilon), whole, false);

  return static_cast<std::int64_t>(std::min<Wide>(limit, INT64_MAX));
}

std::int64_t PartMinimum(std::int64_t total, Share share, double epsilon)
{
  const std::int64_t whole = WholeShare(total, share, false);

  return whole - Times(DecimalOf(epsilon), whole, false);
}

} // namespace kapris::engine::safe
