// The decoder of ITU-T G.726 at 16 kbit/s, in the Recommendation's fixed-point arithmetic.

#include "tools/corvo/evidence/G726Decoder.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>

namespace corvo {
namespace {

// By code: the logarithm of the quantised difference, and the multipliers of the scale factor and
// of the speed control.
constexpr int kDqln[4] = {116, 365, 365, 116};
constexpr int kW[4] = {-22, 439, 439, -22};
constexpr int kF[4] = {0, 7, 7, 0};

constexpr unsigned kSignBit = 2;
constexpr int kToneThreshold = -11776;
constexpr int kQuietStep = 1536;
constexpr int kFastSpeed = 256;  // of the speed control; more counts as this

// Signs are masks: of all bits where negative, else of none. Sound changes its sign as if at
// random, so that each branch on one would be guessed wrong half the time.
int SignOf(int value) {
  return value < 0 ? -1 : 0;
}

int WithSign(int value, int sign) {
  return (value ^ sign) - sign;
}

// 0 of zero.
constexpr int BitLength(unsigned magnitude) {
  return 31 - __builtin_clz(2 * magnitude + 1);
}

// FLOATA of a coefficient. Instead of its exponent: how far a product is shifted to the right, less
// the signal's exponent.
struct Factor {
  std::uint8_t mantissa;
  std::uint8_t shift;
};

constexpr unsigned kFactors = 1 << 14;  // by all bits of a coefficient but the lowest two
constexpr int kMostShift = 28;          // a coefficient has 13 bits, a signal at most 15

constexpr std::array<Factor, kFactors> MakeFactors() {
  std::array<Factor, kFactors> factors{};
  for (unsigned i = 0; i < kFactors; ++i) {
    const unsigned magnitude = (i < kFactors / 2 ? i : kFactors - i) % (kFactors / 2);
    const int exponent = BitLength(magnitude);
    factors[i] = {static_cast<std::uint8_t>(magnitude << 6 >> exponent | 32),
                  static_cast<std::uint8_t>(kMostShift - exponent)};
  }
  return factors;
}

// A sample takes eight of them.
constexpr std::array<Factor, kFactors> kFactorTable = MakeFactors();

// ANTILOG, of a logarithm with seven fractional bits.
int Magnitude(int logarithm) {
  if (logarithm < 0) return 0;
  const int exponent = logarithm >> 7 & 15;
  return ((128 + (logarithm & 127)) << exponent) >> 7;
}

}  // namespace

// FLOATA and FLOATB. The mantissa's highest bit is set, also in that of zero.
G726Decoder::Float G726Decoder::ToFloat(int magnitude, int sign) {
  const int exponent = BitLength(static_cast<unsigned>(magnitude));
  return {sign, exponent, magnitude << 6 >> exponent | 32};
}

// FMULT.
inline int G726Decoder::Multiply(int coefficient, const Float& signal) {
  const Factor& factor = kFactorTable[static_cast<unsigned>(coefficient >> 2) % kFactors];
  const int mantissa = (signal.mantissa * factor.mantissa + 48) >> 4;
  const int product = mantissa << 9 >> (factor.shift - signal.exponent) & 0x7FFF;
  return WithSign(product, signal.sign ^ SignOf(coefficient));
}

// LIMA and MIX.
int G726Decoder::StepSize() const {
  const int speed = std::min(m_ap, kFastSpeed) >> 2;
  const int slow = m_yl >> 6;
  const int difference = m_yu - slow;
  return slow + WithSign((std::abs(difference) * speed) >> 6, SignOf(difference));
}

// TRANS.
bool G726Decoder::IsTransition(int magnitude) const {
  const int whole = m_yl >> 15;
  const int fraction = m_yl >> 10 & 31;
  const int threshold = whole > 9 ? 31 << 10 : (32 + fraction) << whole;
  return m_td && magnitude > (threshold + (threshold >> 1)) >> 1;
}

// UPA2, LIMC, UPA1, LIMD. `sign` and `flat`: of the partially reconstructed signal, its sign, and
// whether it is zero.
void G726Decoder::AdaptPoles(int sign, bool flat) {
  const int differs1 = sign ^ m_pk[0];
  const int differs2 = sign ^ m_pk[1];
  const int pull = std::clamp(m_a[0], -8191, 8191) * 4;
  const int gain2 = flat ? 0 : (WithSign(16384, differs2) - WithSign(pull, differs1)) >> 7;
  const int gain1 = flat ? 0 : WithSign(192, differs1);
  m_a[1] = std::clamp(m_a[1] + gain2 - (m_a[1] >> 7), -12288, 12288);
  const int limit = 15360 - m_a[1];
  m_a[0] = std::clamp(m_a[0] + gain1 - (m_a[0] >> 8), -limit, limit);
}

// XOR and UPB.
void G726Decoder::AdaptZeros(int magnitude, int sign) {
  const int gain = magnitude == 0 ? 0 : 128;
  const Float* const dq = &m_dq[m_at];
  for (std::size_t i = 0; i < m_b.size(); ++i) {
    m_b[i] += WithSign(gain, sign ^ dq[i].sign) - (m_b[i] >> 8);
  }
}

// FILTD, LIMB, FILTE.
void G726Decoder::AdaptScale(unsigned code, int step) {
  m_yu = std::clamp(step + ((kW[code] * 32 - step) >> 5), 544, 5120);
  m_yl += m_yu + (-m_yl >> 6);
}

// FILTA, FILTB, SUBTC, FILTC, TRIGA.
void G726Decoder::AdaptSpeed(unsigned code, int step, bool transition) {
  m_dms += ((kF[code] << 9) - m_dms) >> 5;
  m_dml += ((kF[code] << 11) - m_dml) >> 7;
  const bool steady = step >= kQuietStep && !m_td && std::abs((m_dms << 2) - m_dml) < m_dml >> 3;
  m_ap = transition ? kFastSpeed : m_ap + (((steady ? 0 : 512) - m_ap) >> 4);
}

// TRIGB.
void G726Decoder::Forget() {
  m_a.fill(0);
  m_b.fill(0);
  m_td = false;
}

int G726Decoder::Decode(unsigned code) {
  const Float* const dq = &m_dq[m_at];
  int zeros = 0;
  for (std::size_t i = 0; i < m_b.size(); ++i) zeros += Multiply(m_b[i], dq[i]);
  const int poles = Multiply(m_a[0], m_sr[0]) + Multiply(m_a[1], m_sr[1]);
  const int zeroEstimate = static_cast<std::int16_t>(zeros) >> 1;
  const int estimate = static_cast<std::int16_t>(zeros + poles) >> 1;

  const int step = StepSize();
  const int codeSign = (code & kSignBit) != 0 ? -1 : 0;
  const int magnitude = Magnitude(kDqln[code] + (step >> 2));
  const int difference = WithSign(magnitude, codeSign);
  const int signal = static_cast<std::int16_t>(estimate + difference);
  const int partial = difference + zeroEstimate;
  const int sign = SignOf(partial);
  const bool transition = IsTransition(magnitude);

  AdaptPoles(sign, partial == 0);
  AdaptZeros(magnitude, codeSign);
  AdaptScale(code, step);
  m_td = m_a[1] < kToneThreshold;
  AdaptSpeed(code, step, transition);
  if (transition) Forget();

  m_at = (m_at == 0 ? m_b.size() : m_at) - 1;
  m_dq[m_at] = m_dq[m_at + m_b.size()] = ToFloat(magnitude, codeSign);
  m_sr = {ToFloat(std::abs(signal), SignOf(signal)), m_sr[0]};
  m_pk = {sign, m_pk[0]};
  return std::clamp(signal * 4, -32768, 32767);
}

}  // namespace corvo
