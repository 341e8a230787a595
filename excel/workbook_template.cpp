#include "excel/workbook_template.h"
#include "reports/printer.h"

#include <filesystem>

#include "excel/automation.h"
#include "frame/apifile.h"
#include "frame/errors.h"
#include "frame/language.h"
#include "frame/log.h"
#include "frame/registry.h"
#include "frame/text.h"
#include "frame/vbformat.h"

namespace qumbrel {

namespace {

constexpr std::int32_t kFormatXls = -4143;  // xlWorkbookNormal

struct Format {
    const char* extension;
    std::int32_t code;
};

// The names of a generated workbook, each on the first sheet.
constexpr std::pair<const char*, const char*> kGeneratedNames[] = {
    {"qmb1serialno", "R1C2"}, {"qmb1filename", "R2C2"},       {"qmb1starttime", "R3C2"},
    {"qmb1endtime", "R4C2"},  {"qmb1validdatacount", "R5C2"}, {"qmb1measdate", "R8C1"},
    {"qmb1meastime", "R8C2"},
};

}  // namespace

std::string excel_options_key(const std::string& version) {
    return "HKEY_CURRENT_USER\\Software\\Microsoft\\Office\\" + version + "\\Excel\\Options";
}

void fkt_excelformat(Program& ctx, const std::string& templatePath, Flag macroWanted) {
    ExcelSession& s = ctx.state<ExcelSession>();
    // A new conversion: what went wrong in the last one is forgotten.
    s.failed = false;
    s.printFailed = false;
    try {
        // A private instance: the native engine is always there.
        const std::unique_ptr<ExcelAutomation> app = make_native_automation();
        const std::string version = app->version();
        const auto excelVersion = static_cast<std::int32_t>(vb::Val(version));
        Format f{".xlsx", 51};
        std::string extension;
        if (excelVersion < 12) {
            s.extension = ".xls";
            s.fileFormat = kFormatXls;
            return;
        }
        if (!templatePath.empty()) {
            extension = Cls_APIFile::GetFileExtension(templatePath, false);
            if (extension.empty() || extension.front() != '.') extension = "." + extension;
            const std::string upper = to_upper_ascii(extension);
            f.code = upper == ".XLSX"   ? 51
                     : upper == ".XLSM" ? 52
                     : upper == ".XLS"  ? 56
                     : upper == ".XLSB" ? 50
                                        : 52;
        } else {
            extension = f.extension;
        }
        std::string value;
        RegistryStore(ctx.program_file("registry.ini"))
            .ReadRegValue(excel_options_key(version), "DefaultFormat", value);
        if (const auto n = vb::CDbl(value, ctx.regional.profile()); n && !value.empty()) {
            const auto code = static_cast<std::int32_t>(*n);
            for (const Format known : {Format{".xlsx", 51}, Format{".xlsm", 52}, Format{".xls", 56},
                                       Format{".xlsb", 50}}) {
                if (code != known.code) continue;
                extension = known.extension;
                f.code = known.code;
            }
            if (is_set(macroWanted)) {
                extension = ".xlsm";
                f.code = 52;
            }
        }
        s.extension = extension;
        s.fileFormat = f.code;
    } catch (...) {
        report_trapped(ctx, "fkt_excelformat()", 0);
    }
}

bool fkt_exceltemplate(Program& ctx, const std::string& templatePath,
                       const std::string& targetPath) {
    ExcelSession& s = ctx.state<ExcelSession>();
    Cls_APIFile files;
    try {
        if (templatePath.empty()) {
            if (ctx.host.status_list_up())
                fkt_lststatus(ctx, fkt_translate(ctx, "TemplateNotExist") + ": ");
            std::error_code ec;
            if (std::filesystem::exists(targetPath, ec)) files.DeleteFile(targetPath);
            s.app = make_native_automation(ctx.state<PrintState>().system);
            s.alive = true;
            s.app->add(std::nullopt);
            s.app->activate_sheet(1);
            const std::string ref = "=" + s.app->sheet_name(1) + "!";
            for (const auto& [name, cell] : kGeneratedNames) s.app->add_name(name, ref + cell);
            s.app->number_format({1, 8, 1}, {1, 20000, 1}, "@");
            s.app->number_format({1, 8, 2}, {1, 20000, 2}, "[$-F400]h:mm:ss AM/PM");
            // One channel only: a generated workbook knows no more (kept so).
            for (std::int32_t c = 1; c <= 1; ++c) {
                const std::string n = std::to_string(c);
                s.app->add_name("qmb1ch" + n + "name", ref + "R7C" + std::to_string(c + 3));
                s.app->add_name("qmb1ch" + n + "data", ref + "R8C" + std::to_string(c + 3));
            }
            // Format code -4143 to an OOXML name writes that name's format; the native
            // engine holds no file after closing, so there is nothing to wait for.
            s.app->save_as(targetPath);
            s.app->close();
            s.app->quit();
            s.app.reset();
            return true;
        }
        std::error_code ec;
        if (!std::filesystem::exists(templatePath, ec)) {
            const std::string text = fkt_translate(ctx, "TemplateNotExist") + ": " + templatePath;
            report_plain(ctx, text);
            if (ctx.host.status_list_up()) fkt_lststatus(ctx, text);
            return false;
        }
        if (std::filesystem::exists(targetPath, ec)) files.DeleteFile(targetPath);
        if (to_upper_ascii(Cls_APIFile::GetFileExtension(templatePath, true)) == "XLT") {
            // A workbook made from the template, as Workbooks.Add does (one retry); the
            // engine converts it through the LibreOffice binding or says what is missing.
            for (int attempt = 0; attempt < 2 && !s.app; ++attempt) {
                try {
                    s.app = make_native_automation(ctx.state<PrintState>().system);
                } catch (...) {
                }
            }
            if (!s.app) throw VbError(errnum::kApplicationDefined, "no spreadsheet engine");
            s.alive = true;
            s.app->add(templatePath);
            s.app->save_as(targetPath);
            s.app->close();
            s.app->quit();
            s.app.reset();
            return true;
        }
        // A copy beside the target under the template's own name, then renamed; with an
        // extension other than the template's the rename finds nothing and the copy stays
        // (kept so).
        const std::string folder = Cls_APIFile::GetFilePath(targetPath);
        const std::string copy = folder + "/" + Cls_APIFile::GetFileName(templatePath);
        if (const int rc = files.CopyFile(templatePath, copy); rc != 0)
            throw VbError(errnum::kPathFileAccessError, "cannot copy " + templatePath);
        const std::string renameFrom =
            folder + "/" + Cls_APIFile::GetFileNameNoExtension(templatePath) + s.extension;
        files.RenameFile(renameFrom, targetPath);
        return true;
    } catch (...) {
        report_trapped(ctx, "fkt_exceltemplate()", 0);
        if (s.app) {
            s.app.reset();
            s.alive = false;
        }
        return false;
    }
}

}  // namespace qumbrel
