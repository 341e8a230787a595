#pragma once
// The functions of each recorder family that the pipeline calls: the file-elements reader
// and the report generators. A family whose reader or generator is not built leaves its
// slot empty: the elements of the previous file stand, and no report is written.
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "frame/context.h"
#include "recorder/families.h"
#include "recorder/vt_reader.h"

namespace qumbrel {

// (source, report path without extension, interactive) -> number of errors
using ReportGenerator = std::function<int(Program&, const std::string&, const std::string&, Flag)>;
using ElementsReader = std::function<void(Program&, const std::string&)>;
// The file information list of the run page (and of --info): lines and back colour.
using InfoReader = std::function<void(Program&, FileInfoList&, const std::string&)>;

// Why a file is no recorder file of the family ("" when it is one).
using TypeCheck = std::function<std::string(Program&, const std::string&)>;

// Keeps the file open in the family's library while the result lives, so that the
// readers, which open the file by path call after call, share one parse of it.
using HoldOpen = std::function<std::shared_ptr<void>(Program&, const std::string&)>;

struct FamilyFunctions {
    TypeCheck typeCheck;
    HoldOpen holdOpen;
    ElementsReader fileElements;
    InfoReader fileInfo;
    ReportGenerator convertCSVXLS;
    ReportGenerator convertXLSTPL;
    ReportGenerator convertXLSTPLALML;
};

// The template session of the spreadsheet engine, as the driver needs it: the workbook
// extension for a template, putting the working workbook at its target, and whether the
// session could not be established.
struct TemplateSession {
    std::function<std::string(Program&, const std::string& templateFile, Flag macroWanted)>
        excelformat;
    std::function<bool(Program&, const std::string& templateFile, const std::string& target)>
        exceltemplate;
    std::function<bool(Program&)> excelFailed;
    // A print of the workbook failed: in FDA mode it is kept, never deleted unprinted.
    std::function<bool(Program&)> printFailed;
};

// What the driver and the name composer use; tests replace entries.
struct FamilyTable {
    FamilyFunctions vt, vu, vq, hn, kl;
    ReportGenerator customerReport;  // the customer text, the same for every family
    TemplateSession templates;
    FamilyFunctions& of(RecorderFamily f);
};

// The table of the functions this build has.
FamilyTable default_family_table();

// The table the run uses: ctx.state<FamilyTableSlot>() holds it, filled with the
// default table on first use.
struct FamilyTableSlot {
    std::optional<FamilyTable> table;
};
FamilyTable& family_table(Program& ctx);

// True when the path's extension names a recorder family.
Flag fkt_isfamilyfile(const std::string& path);

}  // namespace qumbrel
