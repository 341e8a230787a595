#include "excel/cell_operations.h"

#include <algorithm>
#include <cctype>

#include "frame/errors.h"
#include "frame/log.h"

namespace qumbrel {

namespace {

std::string upper(std::string_view s) {
    std::string out(s);
    for (auto& c : out) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return out;
}

// The automation error of `e` when it means the program has gone: the session is over,
// the status list says so. True when the caller must leave.
bool gone(Program& ctx, const VbError& e, std::string_view who) {
    if (e.number() != errnum::kRemoteServerGone && e.number() != errnum::kObjectRequired)
        return false;
    ctx.state<ExcelSession>().alive = false;
    if (ctx.host.status_list_up())
        fkt_lststatus(ctx,
                      std::string(who) + " " + std::to_string(e.number()) + " " + e.description());
    return true;
}

// Runs one statement; 462/424 end the session (true: leave), every other error resumes
// at the next statement.
template <class F>
bool statement(Program& ctx, std::string_view who, F&& f) {
    try {
        f();
    } catch (const VbError& e) {
        return gone(ctx, e, who);
    } catch (...) {
    }
    return false;
}

ExcelAutomation* app(Program& ctx) {
    ExcelSession& s = ctx.state<ExcelSession>();
    return s.alive && s.app ? s.app.get() : nullptr;
}

}  // namespace

Flag fkt_excelinsertname(Program& ctx, const std::string& keyword, const ExcelValue& value,
                         std::int32_t rowOffset, std::int32_t colOffset) {
    ExcelAutomation* x = app(ctx);
    if (!x) return kFalse;
    if (rowOffset > 0) {
        ExcelRange at;
        if (statement(ctx, keyword, [&] { at = x->range(keyword); })) return kFalse;
        if (at.row <= 0) return kFalse;  // the name is unknown (1004)
        const ExcelRange cell{at.sheet, rowOffset + at.row - 1, colOffset + at.column};
        if (statement(ctx, keyword, [&] { x->set_cell(cell, value); })) return kFalse;
        if (statement(ctx, keyword, [&] { x->activate_sheet(cell.sheet); })) return kFalse;
        if (statement(ctx, keyword, [&] { x->delete_comment(cell); })) return kFalse;
        return kTrue;
    }
    // Every name whose right end is the keyword, compared in upper case, without any word
    // boundary: "alstarttime" also receives "starttime".
    std::vector<std::string> names;
    if (statement(ctx, keyword, [&] { names = x->names(); })) return kFalse;
    const std::string key = upper(keyword);
    for (const std::string& name : names) {
        if (name.size() < key.size() ||
            upper(name).compare(name.size() - key.size(), key.size(), key) != 0)
            continue;
        ExcelRange at;
        if (statement(ctx, keyword, [&] {
                at = x->range(name);
                x->set_cell(at, value);
            }))
            return kFalse;
        if (at.row <= 0) continue;
        if (statement(ctx, keyword, [&] { x->activate_sheet(at.sheet); })) return kFalse;
        if (statement(ctx, keyword, [&] { x->delete_comment(at); })) return kFalse;
    }
    return kTrue;
}

void fkt_excelfindname(Program& ctx, const std::string& keyword, std::int32_t& row,
                       std::int32_t& column, std::int32_t& sheet) {
    sheet = -1;
    ExcelAutomation* x = app(ctx);
    if (!x) return;
    std::int32_t count = 0;
    if (statement(ctx, keyword, [&] {
            x->workbook_name();
            count = x->sheet_count();
        }))
        return;
    // The bare name on the first sheet.
    try {
        const ExcelRange at = x->sheet_range(1, keyword);
        row = at.row;
        column = at.column;
        sheet = 1;
        if (statement(ctx, keyword, [&] {
                x->activate_sheet(1);
                x->delete_comment(at);
            }))
            return;
    } catch (const VbError& e) {
        if (gone(ctx, e, keyword)) return;
    } catch (...) {
    }
    // "qmb<n>keyword" on sheet n wins; the active sheet is the last one tried.
    for (std::int32_t i = 1; i <= count; ++i) {
        const std::string name = "qmb" + std::to_string(i) + keyword;
        try {
            x->activate_sheet(i);
            const ExcelRange at = x->sheet_range(i, name);
            row = at.row;
            column = at.column;
            sheet = i;
            if (statement(ctx, keyword, [&] { x->delete_comment(at); })) return;
            if (row > 0) break;
        } catch (const VbError& e) {
            if (gone(ctx, e, keyword)) return;
        } catch (...) {
        }
    }
}

Flag fkt_excelinsertfest(Program& ctx, std::int32_t row, std::int32_t column,
                         const ExcelValue& value, std::int32_t rowOffset, std::int32_t colOffset,
                         std::int32_t sheet) {
    if (row <= 0 || sheet <= 0) return kFalse;
    ExcelAutomation* x = app(ctx);
    if (!x) return kFalse;
    try {
        x->activate_sheet(sheet);
        const ExcelRange cell = rowOffset > 0
                                    ? ExcelRange{sheet, row + rowOffset - 1, column + colOffset}
                                    : ExcelRange{sheet, row, column};
        x->set_cell(cell, value);
        return kTrue;
    } catch (const VbError& e) {
        // Past the sheet's last row the value is lost without a word (kept so).
        gone(ctx, e, "fkt_excelinsertfest");
    } catch (...) {
    }
    return kFalse;
}

Flag fkt_excelinsertsheets(Program& ctx, const std::string& keyword, const ExcelValue& value,
                           std::int32_t rowOffset, std::int32_t colOffset) {
    ExcelAutomation* x = app(ctx);
    if (!x) return kFalse;
    std::int32_t count = 0;
    if (statement(ctx, keyword, [&] { count = x->sheet_count(); })) return kFalse;
    const auto write = [&](std::int32_t sheet, const std::string& name) {
        try {
            x->activate_sheet(sheet);
            const ExcelRange at = x->sheet_range(sheet, name);
            const ExcelRange cell =
                rowOffset > 0 ? ExcelRange{sheet, rowOffset + at.row - 1, colOffset + at.column}
                              : at;
            x->set_cell(cell, value);
            if (statement(ctx, keyword, [&] { x->delete_comment(cell); })) return false;
        } catch (const VbError& e) {
            if (gone(ctx, e, keyword)) return false;
        } catch (...) {
        }
        return true;
    };
    if (!write(1, keyword)) return kFalse;
    for (std::int32_t i = 1; i <= count; ++i)
        if (!write(i, "qmb" + std::to_string(i) + keyword)) return kFalse;
    return kTrue;
}

}  // namespace qumbrel
