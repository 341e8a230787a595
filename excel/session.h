#pragma once
// The steps every template report takes around its filling: opening the session on the
// working workbook, printing it through the spreadsheet program, closing (saving unless in
// FDA mode), and the report's own failure path.
//
//   std::string state = run_name;                    // "fkt_VTconvertXLSTPL(src target)"
//   if (!excel_session_open(ctx, target + ext, run_name, state)) { ... }
//   ... fill ...
//   excel_session_print(ctx, target + ext);
//   excel_session_close(ctx);
#include <string>

#include "frame/context.h"

namespace qumbrel {

// Makes the session (`attempts` tries), opens the workbook; the running state becomes the
// run's name and " - Datei öffnen abgeschlossen/Starte Konvertierung...". False after a
// failure, which has taken the failure path.
bool excel_session_open(Program& ctx, const std::string& workbook, const std::string& runName,
                        std::string& runningState, int attempts = 2);

// With printfile: the workbook, or the sheets of printpage ("|1|Daten"), on printer and then,
// with printfile2, on printer2; the default printer is restored afterwards.
void excel_session_print(Program& ctx, const std::string& reportPath);

// Saves (not in FDA mode, unless the print failed: an unprinted report is kept), closes
// without saving again and quits, when the session is still alive; nothing when it is not.
void excel_session_close(Program& ctx);

// A report's failure path: the session closed as far as it is alive, the running state
// recorded in error.log, the conversion marked failed (bExcelFailed).
void excel_session_fail(Program& ctx, const std::string& runningState);

}  // namespace qumbrel
