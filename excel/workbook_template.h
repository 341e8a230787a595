#pragma once
// The two steps before a template report opens its workbook: fkt_excelformat chooses the
// report's extension (from the engine's version, the template's extension and the user's
// DefaultFormat in the registry store), fkt_exceltemplate puts a working workbook at the
// target: a copy of the template, or, without a template, a small workbook of its own with
// the names of a generated template. The template itself is never changed.
//
//   fkt_excelformat(ctx, "/t/report.xltx", kFalse);           // session extension ".xltx"
//   fkt_exceltemplate(ctx, "/t/report.xltx", "/out/r" + ctx.state<ExcelSession>().extension);
#include <string>

#include "frame/context.h"
#include "frame/flag.h"

namespace qumbrel {

void fkt_excelformat(Program& ctx, const std::string& templatePath, Flag macroWanted);
bool fkt_exceltemplate(Program& ctx, const std::string& templatePath,
                       const std::string& targetPath);

// The registry key of the engine's options, for the version text the engine gives.
std::string excel_options_key(const std::string& version);

}  // namespace qumbrel
