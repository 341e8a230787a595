#include "recorder/file_elements.h"

#include <charconv>

#include "frame/vbformat.h"

namespace qumbrel {

namespace {

std::string fmt(Program& ctx, double v, std::string_view pattern) {
    return vb::Format(v, pattern, ctx.regional.profile());
}

}  // namespace

const std::string* FileElements::find(std::string_view key) const {
    struct Row {
        std::string_view key;
        const std::string FileElements::*member;
    };
    static constexpr Row kRows[] = {
        {"O", &FileElements::ti_O},     {"C", &FileElements::ti_C},
        {"F", &FileElements::ti_F},     {"S", &FileElements::ti_S},
        {"DD", &FileElements::ti_DD},   {"MM", &FileElements::ti_MM},
        {"YY", &FileElements::ti_YY},   {"YYYY", &FileElements::ti_YYYY},
        {"HH", &FileElements::ti_HH},   {"mm", &FileElements::ti_mm},
        {"SS", &FileElements::ti_SS},   {"B", &FileElements::ti_B},
        {"L", &FileElements::ti_L},     {"LL", &FileElements::ti_LL},
        {"LLL", &FileElements::ti_LLL}, {"LLLL", &FileElements::ti_LLLL},
        {"C1", &FileElements::ti_C1},   {"C2", &FileElements::ti_C2},
        {"C3", &FileElements::ti_C3},
    };
    for (const auto& row : kRows)
        if (row.key == key) return &(this->*row.member);
    int n = 0;
    const auto [end, ec] = std::from_chars(key.data(), key.data() + key.size(), n);
    if (ec == std::errc{} && end == key.data() + key.size() && key.front() != '0' && n >= 1 &&
        n <= 36)
        return &ti_n[static_cast<std::size_t>(n - 1)];
    return nullptr;
}

void fkt_ClearFileElements(Program& ctx) {
    ctx.state<FileElements>() = FileElements{};
}

void set_date_elements(Program& ctx, FileElements& e, std::int32_t year, std::int32_t month,
                       std::int32_t day, std::int32_t hour, std::int32_t minute,
                       std::int32_t second) {
    e.ti_DD = fmt(ctx, day, "00");
    e.ti_MM = fmt(ctx, month, "00");
    const std::string y = fmt(ctx, year, "00");
    e.ti_YY = y.size() > 2 ? y.substr(y.size() - 2) : y;
    // The century follows the two digits alone: 70 and above is the 1900s.
    const double yy = vb::Val(e.ti_YY);
    e.ti_YYYY = (yy >= 70 ? "19" : "20") + e.ti_YY;
    e.ti_HH = fmt(ctx, hour, "00");
    e.ti_mm = fmt(ctx, minute, "00");
    e.ti_SS = fmt(ctx, second, "00");
}

void set_batch_number_elements(Program& ctx, FileElements& e, std::int32_t batchNo) {
    e.ti_L = std::to_string(batchNo);
    e.ti_LL = fmt(ctx, batchNo, "00");
    e.ti_LLL = fmt(ctx, batchNo, "000");
    e.ti_LLLL = fmt(ctx, batchNo, "0000");
}

void set_no_batch_elements(FileElements& e) {
    e.ti_B.clear();
    e.ti_L.clear();
    e.ti_C1.clear();
    e.ti_C2.clear();
    e.ti_C3.clear();
    e.ti_LL = "00";
    e.ti_LLL = "000";
    e.ti_LLLL = "0000";
}

}  // namespace qumbrel
