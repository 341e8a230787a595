#pragma once
// The file elements: texts that describe the file in hand, for the target name composer.
// They live in the program context for the whole run, because a family without its own
// elements function (KL, unknown extensions) leaves those of the previous file standing.
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "frame/context.h"

namespace qumbrel {

struct FileElements {
    std::string ti_O;  // source file name without extension
    std::string ti_C;  // its last character
    std::string ti_F;  // file message
    std::string ti_S;  // serial number
    std::string ti_DD, ti_MM, ti_YY, ti_YYYY, ti_HH, ti_mm, ti_SS;
    std::string ti_B;  // batch name
    std::string ti_L;  // batch number
    std::string ti_LL, ti_LLL, ti_LLLL;
    std::string ti_C1, ti_C2, ti_C3;   // batch comments
    std::array<std::string, 36> ti_n;  // ti_1 .. ti_36 at ti_n[0] .. ti_n[35]

    std::string& group(int number) { return ti_n.at(static_cast<std::size_t>(number - 1)); }

    // The element of a composer key ("O", "YYYY", "C1", "17", ...); nullptr when none.
    const std::string* find(std::string_view key) const;
};

// Blanks every element.
void fkt_ClearFileElements(Program& ctx);

// The date and time elements from calendar fields as the library gives them.
void set_date_elements(Program& ctx, FileElements& e, std::int32_t year, std::int32_t month,
                       std::int32_t day, std::int32_t hour, std::int32_t minute,
                       std::int32_t second);

// The batch number elements ti_L, ti_LL, ti_LLL, ti_LLLL.
void set_batch_number_elements(Program& ctx, FileElements& e, std::int32_t batchNo);

// A file without a batch block: ti_B, ti_L, ti_C1..ti_C3 empty, ti_LL.. "00", "000", "0000".
void set_no_batch_elements(FileElements& e);

}  // namespace qumbrel
