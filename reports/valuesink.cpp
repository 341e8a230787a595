#include "reports/valuesink.h"

#include <algorithm>
#include <charconv>

#include "frame/codepage.h"
#include "frame/errors.h"
#include "frame/log.h"
#include "frame/text.h"
#include "frame/vbformat.h"
#include "reports/numbertext.h"

namespace qumbrel {

namespace {

// A field index beyond this is a run-time error, not an allocation.
constexpr std::int32_t kMaxFields = 1 << 20;

// VB's Trim: spaces only.
std::string_view trim_spaces(std::string_view s) {
    while (!s.empty() && s.front() == ' ') s.remove_prefix(1);
    while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
    return s;
}

void append_int(std::string& out, std::int32_t v) {
    char buf[16];
    const auto res = std::to_chars(buf, buf + sizeof buf, v);
    out.append(buf, res.ptr);
}

// The text of a value as the system converts it (CStr).
void append_value_text(std::string& out, const Program& ctx, const CellValue& v) {
    if (const auto* s = std::get_if<std::string>(&v)) {
        out.append(*s);
    } else if (const double* d = std::get_if<double>(&v)) {
        append_number_text(out, *d, ctx.regional.DecimalSymbol());
    } else if (const auto* i = std::get_if<std::int32_t>(&v)) {
        append_int(out, *i);
    } else if (const auto* t = std::get_if<DateTime>(&v)) {
        out.append(vb::FormatDate(*t, "General Date", ctx.regional.profile()));
    }
}

// Step 3 of fkt_convertsetvalue: the field text of a CSV value.
std::string csv_field(const Program& ctx, const CellValue& v, std::int32_t iValueType) {
    std::string field;
    if (iValueType != 0) {
        const std::string& a = ctx.opt.decseparator;
        const std::string& b = ctx.opt.listseparator;
        const bool quoted = a.size() == b.size() && (a.empty() || a[0] == b[0]) && a == b;
        if (quoted) field.push_back('"');
        if (const auto* s = std::get_if<std::string>(&v)) {
            field.append(trim_spaces(*s));
        } else {
            append_value_text(field, ctx, v);
        }
        if (quoted) field.push_back('"');
        return field;
    }
    if (std::holds_alternative<EmptyValue>(v)) return field;  // IsNumeric(Empty) is true
    // The text of a number is numeric under the rules that wrote it: no test needed.
    if (std::holds_alternative<double>(v) || std::holds_alternative<std::int32_t>(v)) {
        append_value_text(field, ctx, v);
        return field;
    }
    std::string text;
    append_value_text(text, ctx, v);
    const bool numeric =
        !std::holds_alternative<DateTime>(v) && vb::IsNumeric(text, ctx.regional.profile());
    if (numeric) return text;  // untouched: neither quoted nor trimmed
    field.reserve(text.size() + 2);
    field.push_back('"');
    field.append(trim_spaces(text));  // inner quotes are not doubled
    field.push_back('"');
    return field;
}

void write_xls(Program& ctx, std::int32_t iColum, std::int32_t iRow, const CellValue& v,
               std::int32_t iValueType) {
    if (iColum == 0 || iRow == 0) return;
    ExcelFile& xls = excel_file(ctx);
    // The result is not looked at: a value that cannot be written leaves its cell empty.
    switch (iValueType) {
        case 0:
            xls.WriteValue(2, 0, 1, 0, iRow, iColum, v, 0);
            break;
        case 1:
            xls.WriteValue(0, 0, 3, 0, iRow, iColum, v, 0);
            break;
        case 4:
            xls.WriteValue(1, 0, 3, 0, iRow, iColum, v, 4);
            break;
        case 12:
            xls.WriteValue(1, 0, 3, 0, iRow, iColum, v, 12);
            break;
        default:
            break;
    }
}

// Step 6: the line is every element behind a separator, the first separator cut when it
// is one character, and CR LF. The pieces go straight into the output buffer.
void end_line(Program& ctx, SinkState& s) {
    const std::string& sep = ctx.opt.listseparator;
    const bool cutFirst = utf8_length(sep) == 1;
    std::string& line = s.line;
    line.clear();
    for (std::size_t i = 1; i < s.fields.size(); ++i) {
        if (i > 1 || !cutFirst) line += sep;
        line += s.fields[i];
        s.fields[i].clear();
    }
    line += "\r\n";
    s.csv.write(line);
    // Cleared elements keep their buffers for the next line.
    s.fields.resize(2);
}

const std::vector<SinkState::ChannelEntry>& channel_entries(Program& ctx) {
    SinkState& s = ctx.state<SinkState>();
    const auto& list = ctx.opt.vChannelList;
    if (s.parsedFrom != list || s.channels.size() != list.size()) {
        s.channels.clear();
        for (const auto& entry : list) {
            s.channels.push_back({to_upper_ascii(entry) == "ALL", vb::Val(entry)});
        }
        s.parsedFrom = list;
    }
    return s.channels;
}

}  // namespace

ExcelFile& excel_file(Program& ctx) {
    auto& slot = ctx.state<SinkState>().g_ExcelFile;
    if (!slot) {
        CellConversions conv;
        const RegionalProfile profile = ctx.regional.profile();
        conv.text_to_number = [profile](std::string_view t) { return vb::CDbl(t, profile); };
        conv.date_to_text = [profile](const DateTime& d) {
            return vb::FormatDate(d, "General Date", profile);
        };
        conv.decimal = profile.decimal;
        slot = std::make_unique<ExcelFile>(std::move(conv));
    }
    return *slot;
}

std::int32_t open_csv_report(Program& ctx, const std::string& path) {
    try {
        ctx.state<SinkState>().csv.open(path);
        return 0;
    } catch (const VbError& e) {
        return e.number();
    }
}

std::int32_t close_csv_report(Program& ctx) {
    try {
        ctx.state<SinkState>().csv.close();
        return 0;
    } catch (const VbError& e) {
        return e.number();
    }
}

void reset_field_array(Program& ctx) {
    SinkState& s = ctx.state<SinkState>();
    s.fields.assign(2, std::string());
}

void ArrayInsert(Program& ctx, FieldArray& aValues, std::int32_t iIndex, std::string vValue,
                 std::optional<std::int32_t> vUpperBound, std::optional<bool> vGrow) {
    int step = 1;
    try {
        // Index 0 is the unused slot below the lower bound 1.
        const auto check = [&](std::int64_t i) {
            if (i < 1 || i >= static_cast<std::int64_t>(aValues.size()))
                throw VbError(errnum::kSubscriptOutOfRange, "Subscript out of range");
        };
        const auto redim = [&](std::int64_t ub) {
            if (ub < 1) throw VbError(errnum::kSubscriptOutOfRange, "Subscript out of range");
            if (ub > kMaxFields) throw VbError(errnum::kOutOfMemory, "Out of memory");
            aValues.resize(static_cast<std::size_t>(ub) + 1);
        };
        std::int64_t ub =
            vUpperBound ? *vUpperBound : static_cast<std::int64_t>(aValues.size()) - 1;
        step = 2;
        if (vGrow.value_or(true)) {
            ++ub;
            redim(ub);
        }
        if (ub > iIndex) {
            step = 3;
            check(iIndex);
            check(ub);
            // The (empty) element at the upper bound moves to iIndex; the rest move up.
            std::rotate(aValues.begin() + iIndex, aValues.begin() + ub, aValues.begin() + ub + 1);
            aValues[static_cast<std::size_t>(iIndex)] = std::move(vValue);
        } else if (ub == iIndex) {
            step = 4;
            check(iIndex);
            aValues[static_cast<std::size_t>(iIndex)] = std::move(vValue);
        } else {
            step = 5;
            redim(iIndex);
            aValues[static_cast<std::size_t>(iIndex)] = std::move(vValue);
        }
    } catch (...) {
        report_trapped(ctx, "ArrayInsert()", step);
    }
}

void fkt_convertsetvalue(Program& ctx, std::int16_t iFileFormat, std::int32_t iColum,
                         std::int32_t iRow, const CellValue& vValue, bool bEndOfRow,
                         std::int32_t iValueType) {
    int step = 1;
    try {
        if (iFileFormat == 1) {
            step = 2;
            write_xls(ctx, iColum, iRow, vValue, iValueType);
            return;
        }
        if (iFileFormat != 0) {
            report_plain(ctx, "fkt_convertsetvalue() - Dateiformat fehlerhaft");
            return;
        }
        step = 3;
        SinkState& s = ctx.state<SinkState>();
        std::string field = csv_field(ctx, vValue, iValueType);
        step = 4;
        if (s.fields.empty()) s.fields.assign(2, std::string());
        if (iColum != 0 && iRow != 0) {
            step = 5;
            ArrayInsert(ctx, s.fields, iColum, std::move(field),
                        static_cast<std::int32_t>(s.fields.size() - 1));
        }
        if (bEndOfRow) {
            step = 6;
            end_line(ctx, s);
        }
    } catch (...) {
        // A full or failing disk: the report's closing says so once, not every value.
        if (iFileFormat == 0 && ctx.state<SinkState>().csv.failed()) return;
        std::string where = "fkt_convertsetvalue(iFileFormat:";
        where += std::to_string(iFileFormat);
        where += ",iColum:";
        where += std::to_string(iColum);
        where += ",iRow:";
        where += std::to_string(iRow);
        where += ")";
        report_trapped(ctx, where, step);
    }
}

bool fkt_showchannel(Program& ctx, std::int32_t iChannel) {
    try {
        if (iChannel <= 0) return false;
        for (const auto& e : channel_entries(ctx)) {
            if (e.number == iChannel || e.all) return true;
        }
        return false;
    } catch (...) {
        report_trapped(ctx, "fkt_showchannel(iChannel:" + std::to_string(iChannel) + ")", 0);
        return false;
    }
}

std::int32_t fkt_colpos(Program& ctx, std::int32_t iChannel, std::int32_t iDefault) {
    try {
        if (iChannel <= 0) return 0;
        const auto& entries = channel_entries(ctx);
        for (std::size_t i = 0; i < entries.size(); ++i) {
            if (entries[i].all) return iDefault;
            if (entries[i].number == iChannel) return static_cast<std::int32_t>(i) + 1;
        }
        return 0;
    } catch (...) {
        report_trapped(ctx, "fkt_colpos(iChannel:" + std::to_string(iChannel) + ")", 0);
        return 0;
    }
}

}  // namespace qumbrel
