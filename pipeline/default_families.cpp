// The family functions of this build.
#include "excel/automation.h"
#include "excel/template_reports.h"
#include "excel/workbook_template.h"
#include "pipeline/family_table.h"
#include "recorder/hn_reader.h"
#include "recorder/kl_reader.h"
#include "recorder/vq_reader.h"
#include "recorder/vt_reader.h"
#include "recorder/vu_reader.h"
#include "reports/customer_report.h"
#include "reports/hn_report.h"
#include "reports/kl_report.h"
#include "reports/vq_report.h"
#include "reports/vt_report.h"
#include "reports/vu_report.h"

namespace qumbrel {

FamilyTable default_family_table() {
    FamilyTable t;
    t.vt.typeCheck = [](Program& ctx, const std::string& path) -> std::string {
        const std::string type = VTgetTypeFile(ctx, path);
        return type.empty() || type == vt_type_text(0) ? "no VT file header" : "";
    };
    t.vt.holdOpen = VTHoldOpen;
    t.vt.fileElements = VTGetFileElements;
    t.vt.fileInfo = fkt_ReadVTFileInfo;
    t.vt.convertCSVXLS = fkt_VTconvertCSVXLS;
    t.vt.convertXLSTPL = fkt_VTconvertXLSTPL;
    t.vt.convertXLSTPLALML = fkt_VTconvertXLSTPLALML;

    t.vu.typeCheck = VUTypeCheck;
    t.vu.holdOpen = VUHoldOpen;
    t.vu.fileElements = [](Program& ctx, const std::string& path) {
        VUGetFileElements(ctx, 0, path);
    };
    t.vu.fileInfo = fkt_ReadVUFileInfo;
    t.vu.convertCSVXLS = fkt_VUconvertCSVXLS;
    t.vu.convertXLSTPL = fkt_VUconvertXLSTPL;
    t.vu.convertXLSTPLALML = fkt_VUconvertXLSTPLALML;

    t.vq.typeCheck = VQTypeCheck;
    t.vq.holdOpen = VQHoldOpen;
    t.vq.fileElements = [](Program& ctx, const std::string& path) {
        VQGetFileElements(ctx, 0, path);
    };
    t.vq.fileInfo = fkt_ReadVQFileInfo;
    t.vq.convertCSVXLS = fkt_VQconvertCSVXLS;
    t.vq.convertXLSTPL = fkt_VQconvertXLSTPL;
    t.vq.convertXLSTPLALML = fkt_VQconvertXLSTPLALML;

    t.hn.typeCheck = HNTypeCheck;
    t.hn.holdOpen = HNHoldOpen;
    t.hn.fileElements = [](Program& ctx, const std::string& path) {
        HNGetFileElements(ctx, 0, path);
    };
    t.hn.fileInfo = fkt_ReadHNFileInfo;
    t.hn.convertCSVXLS = fkt_HNconvertCSVXLS;
    t.hn.convertXLSTPL = fkt_HNconvertXLSTPL;
    t.hn.convertXLSTPLALML = fkt_HNconvertXLSTPLALML;

    // KL has no file-elements function: the name composer keeps the previous file's.
    t.kl.typeCheck = KLTypeCheck;
    t.kl.holdOpen = KLHoldOpen;
    t.kl.fileInfo = fkt_ReadKLFileInfo;
    t.kl.convertCSVXLS = fkt_KLconvertCSVXLS;
    t.kl.convertXLSTPL = fkt_KLconvertXLSTPL;
    t.kl.convertXLSTPLALML = fkt_KLconvertXLSTPLALML;

    t.customerReport = fkt_convertKaldersteyn;

    t.templates.excelformat = [](Program& ctx, const std::string& tpl, Flag macroWanted) {
        fkt_excelformat(ctx, tpl, macroWanted);
        return ctx.state<ExcelSession>().extension;
    };
    t.templates.exceltemplate = fkt_exceltemplate;
    t.templates.excelFailed = [](Program& ctx) { return ctx.state<ExcelSession>().failed; };
    t.templates.printFailed = [](Program& ctx) { return ctx.state<ExcelSession>().printFailed; };
    return t;
}

}  // namespace qumbrel
