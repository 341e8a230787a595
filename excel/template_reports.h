#pragma once
// The template reports of the five families: the user's workbook filled from one recorder
// file through the template keywords (defined names), and the alarm and message lists in
// the same workbook or in a second one of their own. Each family has three functions:
//
//   fkt_..convertXLSTPL(ctx, source, targetBase, acceptDamaged)      the report; 1 when it
//        gave up on a damaged file, 0 otherwise (a failure of the session or a reader
//        takes the failure path and sets ExcelSession::failed)
//   fkt_..convertXLSALML(ctx, source, alarmCount, messageCount)      the lists, into the
//        open session, which stays open
//   fkt_..convertXLSTPLALML(ctx, source, targetBase, acceptDamaged)  the second workbook:
//        the header keywords and the lists, in a session of its own
//
//   fkt_excelformat(ctx, tpl, kFalse);
//   fkt_exceltemplate(ctx, tpl, base + ctx.state<ExcelSession>().extension);
//   int rc = fkt_VTconvertXLSTPL(ctx, "/src/a.oge", base, kFalse);
#include <cstdint>
#include <string>

#include "frame/context.h"
#include "frame/flag.h"

namespace qumbrel {

int fkt_VTconvertXLSTPL(Program& ctx, const std::string& source, const std::string& targetBase,
                        Flag acceptDamaged);
void fkt_VTconvertXLSALML(Program& ctx, const std::string& source, std::int32_t alarmCount,
                          std::int32_t messageCount);
int fkt_VTconvertXLSTPLALML(Program& ctx, const std::string& source, const std::string& targetBase,
                            Flag acceptDamaged);

int fkt_VUconvertXLSTPL(Program& ctx, const std::string& source, const std::string& targetBase,
                        Flag acceptDamaged);
void fkt_VUconvertXLSALML(Program& ctx, const std::string& source, std::int32_t alarmCount,
                          std::int32_t messageCount);
int fkt_VUconvertXLSTPLALML(Program& ctx, const std::string& source, const std::string& targetBase,
                            Flag acceptDamaged);

int fkt_VQconvertXLSTPL(Program& ctx, const std::string& source, const std::string& targetBase,
                        Flag acceptDamaged);
void fkt_VQconvertXLSALML(Program& ctx, const std::string& source, std::int32_t alarmCount,
                          std::int32_t messageCount);
int fkt_VQconvertXLSTPLALML(Program& ctx, const std::string& source, const std::string& targetBase,
                            Flag acceptDamaged);

int fkt_KLconvertXLSTPL(Program& ctx, const std::string& source, const std::string& targetBase,
                        Flag acceptDamaged);
void fkt_KLconvertXLSALML(Program& ctx, const std::string& source, std::int32_t alarmCount,
                          std::int32_t messageCount);
int fkt_KLconvertXLSTPLALML(Program& ctx, const std::string& source, const std::string& targetBase,
                            Flag acceptDamaged);

int fkt_HNconvertXLSTPL(Program& ctx, const std::string& source, const std::string& targetBase,
                        Flag acceptDamaged);
void fkt_HNconvertXLSALML(Program& ctx, const std::string& source, std::int32_t alarmCount,
                          std::int32_t messageCount);
int fkt_HNconvertXLSTPLALML(Program& ctx, const std::string& source, const std::string& targetBase,
                            Flag acceptDamaged);

}  // namespace qumbrel
