// Math functions. Null gives Null (except Sgn, which raises 94), Empty counts
// as 0. Abs, Fix, Int and Round keep the subtype of a number; a text becomes a
// Double.
#include <bit>
#include <chrono>
#include <cmath>

#include "platform/script/vbscript/builtins_common.h"

namespace ketrova::script::vbscript {

namespace {

Variant Real(double value) {
  if (!std::isfinite(value)) throw VbError(6);
  return Variant(value);
}

// Applies `op` to a number and answers in its own subtype where that holds
// the result, as VB's Abs, Fix, Int and Round do.
template <typename Op>
Variant KeepSubtype(const Variant& v, Op op) {
  switch (v.Type()) {
    case vbNull:
      return Variant::Null();
    case vbEmpty:
      return Variant::Integer(0);
    case vbBoolean:
    case vbInteger: {
      double r = op(static_cast<double>(v.ToInteger()));
      if (r < -32768 || r > 32767) return Variant::Long(static_cast<std::int32_t>(r));
      return Variant::Integer(static_cast<std::int16_t>(r));
    }
    case vbByte:
      return Variant::Byte(static_cast<std::uint8_t>(op(static_cast<double>(v.AsByte()))));
    case vbLong: {
      double r = op(static_cast<double>(v.AsLong()));
      if (r < -2147483648.0 || r > 2147483647.0) return Variant(r);
      return Variant::Long(static_cast<std::int32_t>(r));
    }
    case vbSingle:
      return Variant::Single(static_cast<float>(op(static_cast<double>(v.AsSingle()))));
    case vbCurrency:
      return Variant::FromCurrency(op(static_cast<double>(v.AsCurrency().scaled) / 10000.0));
    case vbDate:
      return Variant::FromDate(op(v.AsDate().value));
    case vbDecimal:
      return Variant(op(v.ToDouble())).ConvertTo(vbDecimal);
    default:
      return Real(op(v.ToDouble()));
  }
}

template <typename Op>
Variant RealFunction(Args args, Op op) {
  if (args[0].IsNull()) return Variant::Null();
  return Real(op(args[0].ToDouble()));
}

// VB's random number generator: a 24-bit linear congruence, per thread.
struct RandomState {
  std::uint32_t seed = 0x50000;
};
thread_local RandomState randomState;

}  // namespace

Variant BiAbs(Args args) {
  return KeepSubtype(args[0], [](double x) { return std::fabs(x); });
}

Variant BiFix(Args args) {
  return KeepSubtype(args[0], [](double x) { return std::trunc(x); });
}

Variant BiInt(Args args) {
  return KeepSubtype(args[0], [](double x) { return std::floor(x); });
}

// Round(number[, places]): banker's rounding at the given decimal place.
Variant BiRound(Args args) {
  std::int32_t places = LongArg(args, 1, 0);
  if (places < 0) RaiseInvalidArgument();
  if (args[0].Type() == vbBoolean) return args[0];  // Round(True) stays Boolean
  double scale = std::pow(10.0, places);
  return KeepSubtype(args[0], [scale, places](double x) {
    if (places == 0) return RoundHalfEven(x);
    double scaled = x * scale;
    if (!std::isfinite(scaled)) return x;
    return RoundHalfEven(scaled) / scale;
  });
}

Variant BiSgn(Args args) {
  double x = args[0].ToDouble();
  return Variant::Integer(static_cast<std::int16_t>(x > 0 ? 1 : x < 0 ? -1 : 0));
}

Variant BiAtn(Args args) {
  return RealFunction(args, [](double x) { return std::atan(x); });
}
Variant BiCos(Args args) {
  return RealFunction(args, [](double x) { return std::cos(x); });
}
Variant BiSin(Args args) {
  return RealFunction(args, [](double x) { return std::sin(x); });
}
Variant BiTan(Args args) {
  return RealFunction(args, [](double x) { return std::tan(x); });
}
Variant BiExp(Args args) {
  return RealFunction(args, [](double x) { return std::exp(x); });
}

Variant BiLog(Args args) {
  return RealFunction(args, [](double x) {
    if (x <= 0) RaiseInvalidArgument();
    return std::log(x);
  });
}

Variant BiSqr(Args args) {
  return RealFunction(args, [](double x) {
    if (x < 0) RaiseInvalidArgument();
    return std::sqrt(x);
  });
}

// RGB(red, green, blue): each part above 255 counts as 255; a negative raises 5.
Variant BiRGB(Args args) {
  std::int32_t color = 0;
  for (int i = 2; i >= 0; --i) {
    std::int32_t part = args[static_cast<std::size_t>(i)].ToLong();
    if (part < 0) RaiseInvalidArgument();
    color = color * 256 + std::min(part, 255);
  }
  return Variant::Long(color);
}

// Rnd([number]): below 0 reseeds from the number's bits and draws, 0 repeats
// the last draw, anything else draws the next.
Variant BiRnd(Args args) {
  RandomState& state = randomState;
  if (!Missing(args, 0)) {
    float n = args[0].ToSingle();
    // The seed is the last draw: before any draw that is the start value
    // (Rnd(0) = 0.01953125), after Randomize the mixed seed.
    if (n == 0.0f) return Variant::Single(static_cast<float>(state.seed) / 16777216.0f);
    if (n < 0.0f) {
      auto bits = std::bit_cast<std::uint32_t>(n);
      state.seed = (bits + (bits >> 24)) & 0xFFFFFF;
    }
  }
  state.seed = (state.seed * 1140671485u + 12820163u) & 0xFFFFFF;
  return Variant::Single(static_cast<float>(state.seed) / 16777216.0f);
}

// Randomize [number]: mixes the number (the Timer when none is given) into the
// middle bits of the seed, so that Rnd(-1) followed by Randomize n repeats a
// sequence.
Variant BiRandomize(Args args) {
  double n;
  if (Missing(args, 0)) {
    auto now = std::chrono::system_clock::now().time_since_epoch();
    n = static_cast<double>(std::chrono::duration_cast<std::chrono::microseconds>(now).count() %
                            86400000000LL) /
        1e6;
  } else {
    n = args[0].ToDouble();
  }
  auto bits = std::bit_cast<std::uint64_t>(n);
  auto high = static_cast<std::uint32_t>(bits >> 32);
  std::uint32_t mixed = ((high & 0xFFFF) ^ (high >> 16)) << 8;
  randomState.seed = (randomState.seed & 0xFF) | (mixed & 0xFFFF00);
  return Variant();
}

}  // namespace ketrova::script::vbscript
