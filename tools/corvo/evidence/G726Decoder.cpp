// The decoder of ITU-T G.726 at 16 kbit/s, in the Recommendation's fixed-point arithmetic.

#include "tools/corvo/evidence/G726Decoder.h"

#include <algorithm>
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

// Of a value that isn't zero.
int BitLength(int value) {
  return 32 - __builtin_clz(static_cast<unsigned>(value));
}

// ANTILOG, of a logarithm with seven fractional bits.
int Magnitude(int logarithm) {
  if (logarithm < 0) return 0;
  const int exponent = logarithm >> 7 & 15;
  return ((128 + (logarithm & 127)) << exponent) >> 7;
}

}  // namespace

// FLOATA and FLOATB.
G726Decoder::Float G726Decoder::ToFloat(int magnitude, bool negative) {
  if (magnitude == 0) return {negative, 0, 32};
  const int exponent = BitLength(magnitude);
  return {negative, exponent, (magnitude << 6) >> exponent};
}

// FMULT.
int G726Decoder::Multiply(int coefficient, const Float& signal) {
  const bool negative = coefficient < 0;
  const int shifted = coefficient >> 2;
  const Float factor = ToFloat((negative ? -shifted : shifted) & 0x1FFF, negative);
  const int exponent = signal.exponent + factor.exponent;
  const int mantissa = (signal.mantissa * factor.mantissa + 48) >> 4;
  const int product = exponent <= 26 ? (mantissa << 7) >> (26 - exponent)
                                     : ((mantissa << 7) << (exponent - 26)) & 0x7FFF;
  return signal.negative != factor.negative ? -product : product;
}

// LIMA and MIX.
int G726Decoder::StepSize() const {
  const int speed = std::min(m_ap, kFastSpeed) >> 2;
  const int slow = m_yl >> 6;
  const int difference = m_yu - slow;
  const int product = (std::abs(difference) * speed) >> 6;
  return slow + (difference < 0 ? -product : product);
}

// TRANS.
bool G726Decoder::IsTransition(int magnitude) const {
  const int whole = m_yl >> 15;
  const int fraction = m_yl >> 10 & 31;
  const int threshold = whole > 9 ? 31 << 10 : (32 + fraction) << whole;
  return m_td && magnitude > (threshold + (threshold >> 1)) >> 1;
}

// UPA2, LIMC, UPA1, LIMD. `sign` and `flat`: of the partially reconstructed signal, whether it is
// negative, and zero.
void G726Decoder::AdaptPoles(int sign, bool flat) {
  const bool same1 = sign == m_pk[0];
  const bool same2 = sign == m_pk[1];
  const int pull = std::clamp(m_a[0], -8191, 8191) * 4;
  const int gain2 = flat ? 0 : ((same2 ? 16384 : -16384) + (same1 ? -pull : pull)) >> 7;
  const int gain1 = flat ? 0 : (same1 ? 192 : -192);
  m_a[1] = std::clamp(m_a[1] + gain2 - (m_a[1] >> 7), -12288, 12288);
  const int limit = 15360 - m_a[1];
  m_a[0] = std::clamp(m_a[0] + gain1 - (m_a[0] >> 8), -limit, limit);
}

// XOR and UPB.
void G726Decoder::AdaptZeros(int magnitude, bool negative) {
  for (std::size_t i = 0; i < m_b.size(); ++i) {
    const int gain = magnitude == 0 ? 0 : (negative == m_dq[i].negative ? 128 : -128);
    m_b[i] += gain - (m_b[i] >> 8);
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
  int zeros = 0;
  for (std::size_t i = 0; i < m_b.size(); ++i) zeros += Multiply(m_b[i], m_dq[i]);
  const int poles = Multiply(m_a[0], m_sr[0]) + Multiply(m_a[1], m_sr[1]);
  const int zeroEstimate = static_cast<std::int16_t>(zeros) >> 1;
  const int estimate = static_cast<std::int16_t>(zeros + poles) >> 1;

  const int step = StepSize();
  const bool negative = (code & kSignBit) != 0;
  const int magnitude = Magnitude(kDqln[code] + (step >> 2));
  const int difference = negative ? -magnitude : magnitude;
  const int signal = static_cast<std::int16_t>(estimate + difference);
  const int partial = difference + zeroEstimate;
  const int sign = partial < 0 ? 1 : 0;
  const bool transition = IsTransition(magnitude);

  AdaptPoles(sign, partial == 0);
  AdaptZeros(magnitude, negative);
  AdaptScale(code, step);
  m_td = m_a[1] < kToneThreshold;
  AdaptSpeed(code, step, transition);
  if (transition) Forget();

  std::copy_backward(m_dq.begin(), m_dq.end() - 1, m_dq.end());
  m_dq[0] = ToFloat(magnitude, negative);
  m_sr = {ToFloat(std::abs(signal), signal < 0), m_sr[0]};
  m_pk = {sign, m_pk[0]};
  return std::clamp(signal * 4, -32768, 32767);
}

}  // namespace corvo
