#pragma once
// What the template reports of the five families share: the fixed order of writing into
// the user's workbook (head, header keywords, batch, channel keywords, the samples through
// the block cursor with the time window and the skip counter, the lists, the macro,
// printing, closing), and the separate alarm and message workbook. A family supplies its
// readers and its keywords through TemplateFamily.
//
//   VtTemplate family;
//   return run_template_report(ctx, family, source, targetBase, is_set(acceptDamaged));
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "excel/automation.h"
#include "frame/context.h"
#include "frame/flag.h"
#include "recorder/sample_cursor.h"

namespace qumbrel {

// One channel's row of the channel tables.
struct TemplateChannel {
    std::int32_t chNo = 0;
    std::string number;  // "##0" of the channel number: the <N> of ch<N>data
    std::string name, unit, scaleMin, scaleMax, color;
    std::int32_t scaleFlag = 0, logMin = 0, logMax = 0, dataType = 0, decimals = 0;
    double scaleLow = 0, scaleHigh = 0;
};

// Keywords and their values in writing order.
using Keywords = std::vector<std::pair<std::string, ExcelValue>>;

// What a family's readers tell of the file in hand.
struct TemplateFile {
    std::int32_t status = 0;  // > 0: the file failed its check sum
    std::string fileType;
    std::int32_t dataCount = 0, alarmCount = 0, messageCount = 0;
    Keywords header;  // from `recordertype` on, the family's extras included
    Keywords batch;   // empty: the file has no batch data, or the family no batch block
};

class TemplateFamily {
  public:
    virtual ~TemplateFamily() = default;
    virtual std::string name() const = 0;  // "VT", ...: the functions' names
    // The workbook the session opens.
    virtual std::string workbook(const std::string& targetBase,
                                 const std::string& extension) const {
        return targetBase + extension;
    }
    // Header (and batch) of the file; `main` is false for the separate workbook.
    virtual void read(Program& ctx, const std::string& source, TemplateFile& file, bool main) = 0;
    virtual std::vector<TemplateChannel> channels(Program& ctx, const std::string& source,
                                                  const TemplateFile& file) = 0;
    // 1 for an event file, 2 for a display file, 0 for a file whose data is not written.
    virtual int kind(const std::string& fileType) const = 0;
    // ch<N>al: each sample's alarm mark beside the values.
    virtual bool alarm_marks() const { return false; }
    // Channels of scale flag 3 written as 10 to the power of their decade.
    virtual bool logarithmic() const { return false; }
    virtual bool log_keywords() const { return true; }  // ch<N>logmin, ch<N>logmax
    virtual std::unique_ptr<SampleCursor> open(Program& ctx, const std::string& source,
                                               const std::vector<TemplateChannel>& channels,
                                               const TemplateFile& file, bool eventFile) = 0;
    // The family's list function (fkt_..convertXLSALML) on the open session.
    virtual void lists(Program& ctx, const std::string& source, const TemplateFile& file) = 0;
    // Sessions the separate workbook may try to create.
    virtual int separate_attempts() const { return 2; }
};

// The main report: 1 when it gave up on a damaged file, 0 otherwise (a failure of the
// session or a reader takes the failure path: ExcelSession::failed).
int run_template_report(Program& ctx, TemplateFamily& family, const std::string& source,
                        const std::string& targetBase, bool acceptDamaged);

// The separate alarm and message workbook: head, header keywords, the lists.
int run_separate_workbook(Program& ctx, TemplateFamily& family, const std::string& source,
                          const std::string& targetBase, bool acceptDamaged);

// Both for a family class: what the families' fkt_..convertXLSTPL(ALML) functions do.
template <class Family>
int template_report(Program& ctx, const std::string& source, const std::string& targetBase,
                    Flag acceptDamaged) {
    Family family;
    return run_template_report(ctx, family, source, targetBase, is_set(acceptDamaged));
}
template <class Family>
int separate_workbook(Program& ctx, const std::string& source, const std::string& targetBase,
                      Flag acceptDamaged) {
    Family family;
    return run_separate_workbook(ctx, family, source, targetBase, is_set(acceptDamaged));
}

// A list of the lists function: the positions of `keys` (slot order; "" is a slot the
// family has no keyword for), then `count` entries, each read by `read(index, values)`
// into one value a slot and written at row offset index + 1. `alstartno` also goes to
// every sheet's qmb<n>alstartno.
void write_template_list(Program& ctx, std::span<const char* const> keys, std::int32_t count,
                         const std::function<void(std::int32_t, std::vector<ExcelValue>&)>& read);

// What a family's lists function writes: alarm and message slots with their readers,
// whether it writes `eventcount`, and lists of its own behind the messages.
struct TemplateLists {
    std::span<const char* const> alarmKeys;
    std::function<void(std::int32_t, std::vector<ExcelValue>&)> alarm;
    std::span<const char* const> messageKeys;
    std::function<void(std::int32_t, std::vector<ExcelValue>&)> message;
    bool eventCount = true;
    std::function<void()> more;
};

// The lists function of a family ("VT", ...): alarms with alarminclusive, `eventcount`,
// the message positions, messages with messageinclusive, then `more`. A failure is
// recorded in error.log and the caller goes on.
void run_template_lists(Program& ctx, const std::string& family, const std::string& source,
                        std::int32_t alarmCount, std::int32_t messageCount,
                        const TemplateLists& lists);

// " <File damaged [CRC Error]>" behind a damaged file's message.
std::string damaged_message(const std::string& message, std::int32_t status);

// The value of a logarithmic channel: 10 ^ (logMin + (v - low) (logMax - logMin) /
// (high - low)); nothing when the scale has no span.
ExcelValue log_scale_value(double value, const TemplateChannel& channel);

inline double number(std::int32_t v) {
    return static_cast<double>(v);
}

}  // namespace qumbrel
