#pragma once
// From raw sample to number: the library's integer is placed behind its decimals by text,
// so no floating arithmetic changes the digits, then read under the regional rules.
// Also the logarithmic display value of a channel.
#include <cstdint>
#include <string_view>

#include "frame/context.h"

namespace qumbrel {

// The row of zeros put in front of the digits: 20 in VT, 27 in the other families.
inline constexpr std::string_view kVtZeroRow = "00000000000000000000";
inline constexpr std::string_view kZeroRow27 = "000000000000000000000000000";

// The step on a decimal text ("-5", "12345"): sign off, zeros in front, the option
// `decseparator` before the last `decimals` characters, fkt_TrimNull, sign back, CDbl.
// Throws VbError 13 when the result is no number and 5 when `decimals` exceeds the digits.
// Only for `decimals` > 0; callers keep the integer otherwise.
double sample_text_to_number(Program& ctx, std::string_view decimalText, std::int32_t decimals,
                             std::string_view zeroRow);

// The same for one integer sample, decided once per run: where the separator is the
// regional decimal symbol the text step comes down to one correctly rounded division
// (raw / 10^decimals is the nearest double to the decimal text, as CDbl's is), so the
// text is built only for the unusual settings.
class SampleNumberStep {
  public:
    SampleNumberStep(Program& ctx, std::string_view zeroRow);
    double operator()(std::int64_t raw, std::int32_t decimals) const {
        if (fast_ && decimals > 0 && decimals <= kMaxFastDecimals)
            return static_cast<double>(raw) / kPow10[static_cast<std::size_t>(decimals)];
        return by_text(raw, decimals);
    }
    bool fast() const { return fast_; }

  private:
    // Exact powers of ten; 20 decimals still leave a digit of the 20-zero row in front.
    static constexpr std::int32_t kMaxFastDecimals = 20;
    static constexpr double kPow10[kMaxFastDecimals + 1] = {
        1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9, 1e10,
        1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20};
    double by_text(std::int64_t raw, std::int32_t decimals) const;

    Program& ctx_;
    std::string_view zeroRow_;
    bool fast_ = false;
};

// 10 ^ ((value - scaleLow) * (decadeHigh - decadeLow) / (scaleHigh - scaleLow) + decadeLow).
// Errors (equal scale limits, overflow) go to the error log as
// "fkt_logvalue of Modul DllVUFileAccess" and give 0.
double fkt_logvalue(Program& ctx, double value, std::int32_t decadeHigh, std::int32_t decadeLow,
                    double scaleLow, double scaleHigh);

}  // namespace qumbrel
