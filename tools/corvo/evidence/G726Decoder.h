#ifndef TOOLS_CORVO_EVIDENCE_G726DECODER_H
#define TOOLS_CORVO_EVIDENCE_G726DECODER_H

#include <array>

namespace corvo {

// Decodes 16 kbit/s ADPCM in the fixed-point arithmetic of ITU-T Recommendation G.726, whose test
// sequences it has not been held against. One object for one stream, from its start. The members
// and steps carry the names of the Recommendation.
class G726Decoder {
 public:
  // The next sample, linear with 16 bits, of a 2-bit code.
  int Decode(unsigned code);

 private:
  // A sign (all bits, or none), a 4-bit exponent and a 6-bit mantissa; this value is zero.
  struct Float {
    int sign = 0;
    int exponent = 0;
    int mantissa = 32;
  };

  static Float ToFloat(int magnitude, int sign);
  static int Multiply(int coefficient, const Float& signal);

  int StepSize() const;
  bool IsTransition(int magnitude) const;
  void AdaptPoles(int sign, bool flat);
  void AdaptZeros(int magnitude, int sign);
  void AdaptScale(unsigned code, int step);
  void AdaptSpeed(unsigned code, int step, bool transition);
  void Forget();

  int m_yu = 544;    // fast scale factor
  int m_yl = 34816;  // slow scale factor, six bits finer
  int m_ap = 0;      // speed control
  int m_dms = 0;     // short-term average of F(I)
  int m_dml = 0;     // long-term average of F(I)
  bool m_td = false;
  std::array<int, 2> m_a{};  // poles
  std::array<int, 6> m_b{};  // zeros
  std::array<Float, 2> m_sr;
  std::array<Float, 12> m_dq;  // the last six from m_at on, newest first; each stands twice
  std::size_t m_at = 0;
  std::array<int, 2> m_pk{};  // signs of earlier partial signals
};

}  // namespace corvo

#endif
