#include "recorder/sample_number.h"

#include <cmath>
#include <string>

#include "frame/errors.h"
#include "frame/log.h"
#include "frame/vbformat.h"
#include "recorder/filters.h"

namespace qumbrel {

namespace {

bool has_digit_or_sign(std::string_view s) {
    for (char c : s)
        if ((c >= '0' && c <= '9') || c == '-') return true;
    return false;
}

}  // namespace

double sample_text_to_number(Program& ctx, std::string_view decimalText, std::int32_t decimals,
                             std::string_view zeroRow) {
    std::string_view sign;
    std::string_view digits = decimalText;
    if (!digits.empty() && digits.front() == '-') {
        sign = "-";
        digits.remove_prefix(1);
    }
    std::string padded(zeroRow);
    padded.append(digits);
    if (decimals < 0 || static_cast<std::size_t>(decimals) > padded.size())
        throw VbError(errnum::kInvalidArgument, "Invalid procedure call or argument");
    const std::size_t cut = padded.size() - static_cast<std::size_t>(decimals);
    std::string placed = padded.substr(0, cut);
    placed.append(ctx.opt.decseparator);
    placed.append(padded, cut);
    std::string text(sign);
    text.append(fkt_TrimNull(ctx, placed));
    const auto value = vb::CDbl(text, ctx.regional.profile());
    if (!value) throw VbError(errnum::kTypeMismatch, "Type mismatch");
    return *value;
}

SampleNumberStep::SampleNumberStep(Program& ctx, std::string_view zeroRow)
    : ctx_(ctx), zeroRow_(zeroRow) {
    const std::string& sep = ctx.opt.decseparator;
    const auto& r = ctx.regional.profile();
    fast_ = !sep.empty() && sep == r.decimal && r.thousand != r.decimal &&
            !has_digit_or_sign(sep) && zeroRow.size() >= static_cast<std::size_t>(kMaxFastDecimals);
}

double SampleNumberStep::by_text(std::int64_t raw, std::int32_t decimals) const {
    return sample_text_to_number(ctx_, std::to_string(raw), decimals, zeroRow_);
}

double fkt_logvalue(Program& ctx, double value, std::int32_t decadeHigh, std::int32_t decadeLow,
                    double scaleLow, double scaleHigh) {
    try {
        const double span = scaleHigh - scaleLow;
        if (span == 0) throw VbError(11, "Division by zero");
        const double exponent =
            (value - scaleLow) * (static_cast<double>(decadeHigh) - decadeLow) / span + decadeLow;
        const double result = std::pow(10.0, exponent);
        if (!std::isfinite(result)) throw VbError(errnum::kOverflow, "Overflow");
        return result;
    } catch (...) {
        report_trapped(ctx, "fkt_logvalue of Modul DllVUFileAccess", 0);
    }
    return 0;
}

}  // namespace qumbrel
