#pragma once
// Steps the template reports of every family share: the head keywords, the macro step,
// status lines, and list positions with the writes at them.
#include <cstdint>
#include <string>
#include <string_view>

#include "excel/automation.h"
#include "frame/context.h"
#include "recorder/sample_matrix.h"

namespace qumbrel {

// A list keyword's cell as fkt_excelfindname found it; sheet -1 when the template lacks it.
struct KeywordPosition {
    std::int32_t row = 0;
    std::int32_t column = 0;
    std::int32_t sheet = -1;
};

KeywordPosition find_keyword(Program& ctx, const std::string& keyword);

// A value at the position, `rowOffset` rows down (1: the named cell), `colOffset` right.
void write_at(Program& ctx, const KeywordPosition& at, const ExcelValue& value,
              std::int32_t rowOffset, std::int32_t colOffset = 0);

// `filename` (no path), `userdef1` .. `userdef4` as the option file holds them now,
// `software`.
void write_head_keywords(Program& ctx, const std::string& source);

// A measured value as a cell takes it: a number, or nothing for a missing value.
ExcelValue sample_cell_value(const SampleCell& cell);

// A status line when the status list is up.
void template_status(Program& ctx, std::string_view text);

// With runexcelmakro: the macro "Qumbrel" (a missing macro or an engine without macros is
// logged and passed; an office suite that had to be stopped throws, and the report takes
// its failure path); then "closefile".
void run_template_macro(Program& ctx);

}  // namespace qumbrel
