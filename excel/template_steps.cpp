#include "excel/template_steps.h"

#include "excel/cell_operations.h"
#include "frame/apifile.h"
#include "frame/errors.h"
#include "frame/language.h"
#include "frame/log.h"
#include "reports/sheet_report.h"

namespace qumbrel {

KeywordPosition find_keyword(Program& ctx, const std::string& keyword) {
    KeywordPosition at;
    fkt_excelfindname(ctx, keyword, at.row, at.column, at.sheet);
    return at;
}

void write_at(Program& ctx, const KeywordPosition& at, const ExcelValue& value,
              std::int32_t rowOffset, std::int32_t colOffset) {
    if (at.sheet <= 0) return;  // not in the template: nothing is asked of the engine
    fkt_excelinsertfest(ctx, at.row, at.column, value, rowOffset, colOffset, at.sheet);
}

void write_head_keywords(Program& ctx, const std::string& source) {
    fkt_excelinsertname(ctx, "filename", Cls_APIFile::GetFileName(source), 0, 0);
    for (int k = 1; k <= 4; ++k)
        fkt_excelinsertname(ctx, "userdef" + std::to_string(k), read_userdef(ctx, k), 0, 0);
    fkt_excelinsertname(ctx, "software", ctx.info.program_name(), 0, 0);
}

ExcelValue sample_cell_value(const SampleCell& cell) {
    if (cell.kind == SampleKind::Empty) return std::monostate{};
    return cell.value;
}

void template_status(Program& ctx, std::string_view text) {
    if (ctx.host.status_list_up()) fkt_lststatus(ctx, text);
}

void run_template_macro(Program& ctx) {
    ExcelSession& s = ctx.state<ExcelSession>();
    if (ctx.opt.runexcelmakro != 0 && s.alive && s.app) {
        template_status(ctx, fkt_translate(ctx, "runmakro"));
        try {
            s.app->run_macro("Qumbrel");
        } catch (const VbError& e) {
            // No such macro, or an engine that runs none (1004): logged, and the report
            // goes on.
            template_status(ctx, "Qumbrel: " + std::to_string(e.number()) + " " + e.description());
            report_plain(ctx,
                         "macro Qumbrel: " + std::to_string(e.number()) + " " + e.description());
            if (e.number() == errnum::kRemoteServerGone || e.number() == errnum::kObjectRequired) {
                // The office suite is gone (a hung macro was stopped): the report fails.
                s.alive = false;
                throw;
            }
        }
    }
    template_status(ctx, fkt_translate(ctx, "closefile"));
    ctx.host.pump_events();
}

}  // namespace qumbrel
