#pragma once
// The VT template reports: the user's workbook filled from one .ogd/.oge file through the
// template keywords (defined names), and the alarm and message lists, in the same workbook
// or in a second one of their own.
//
//   fkt_excelformat(ctx, tpl, kFalse);
//   fkt_exceltemplate(ctx, tpl, base + ctx.state<ExcelSession>().extension);
//   int rc = fkt_VTconvertXLSTPL(ctx, "/src/a.oge", base, kFalse);  // 1: damaged, not filled
#include <cstdint>
#include <string>

#include "frame/context.h"
#include "frame/flag.h"

namespace qumbrel {

// Fills the working workbook at `targetBase` + the session's extension. 1 when it gave up
// on a damaged file (without `acceptDamaged`), 0 otherwise; a failure of the session or the
// reader takes the failure path (ExcelSession::failed).
int fkt_VTconvertXLSTPL(Program& ctx, const std::string& source, const std::string& targetBase,
                        Flag acceptDamaged);

// The alarm and message lists into the open session, which stays open.
void fkt_VTconvertXLSALML(Program& ctx, const std::string& source, std::int32_t alarmCount,
                          std::int32_t messageCount);

// The second workbook: the header keywords and the lists, in a session of its own.
int fkt_VTconvertXLSTPLALML(Program& ctx, const std::string& source, const std::string& targetBase,
                            Flag acceptDamaged);

}  // namespace qumbrel
