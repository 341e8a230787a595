#pragma once
// What the CSV and XLS reports of every family share: one sheet read from top to bottom
// (head, header block, record blocks, channel header rows, one row per sample), every
// cell through fkt_convertsetvalue, the row and column offsets, the channel selection and
// columns, and the closing with printing. A family report derives, reads its file through
// its own readers and writes its own blocks in its own order with these steps.
//
//   class VuReport : public SheetReport { int convert() override { ... } };
//   return VuReport(ctx, source, base, interactive).run();
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frame/context.h"
#include "recorder/sample_cursor.h"
#include "recorder/vt_reader.h"
#include "reports/cellvalue.h"

namespace qumbrel {

// A reader that failed has reported it under its own name; the report only ends.
struct ReaderFailed {};

// The channel header arrays; element 0 of each holds the row's label.
struct ChannelArrays {
    std::vector<std::string> number, name, unit, scaleMin, scaleMax, zoneMin, zoneMax, color;
    std::vector<std::int32_t> decimals, number2, number3, number4, number5;
    std::vector<double> scaleLow, scaleHigh;  // the two doubles of the channel record
    std::vector<std::int32_t> chNo;           // numeric channel numbers, element 0 = 0
    std::vector<std::int32_t> dataType;

    void size(std::size_t n);
};

// The header block the VT, VU, VQ and KL reports share, from "Recorder" to "Group Name",
// with "File" behind "File Message" (VT, VQ) or last (VU, KL), and the channel counts the
// family has.
struct HeaderRows {
    std::string deviceType, serialNo, fileMessage, fileType, startTime, endTime, timeCorrect;
    std::string startedBy, stoppedBy, startingCond, dividingCond, samplingInt;
    std::string triggerDateTime, groupName;
    std::int32_t status = 0, measChCount = 0, mathChCount = 0, dataCount = 0, triggerNo = 0;
    std::optional<std::int32_t> extChCount, ctrlChCount;
    bool fileLast = false;
};

// The values of a family's info record, by their common names.
template <class Info>
HeaderRows header_rows(const Info& i) {
    HeaderRows h;
    h.deviceType = i.deviceType;
    h.serialNo = i.serialNo;
    h.fileMessage = i.fileMessage;
    h.fileType = i.fileType;
    h.startTime = i.startTime;
    h.endTime = i.endTime;
    h.timeCorrect = i.timeCorrect;
    h.startedBy = i.startedBy;
    h.stoppedBy = i.stoppedBy;
    h.startingCond = i.startingCond;
    h.dividingCond = i.dividingCond;
    h.samplingInt = i.samplingInt;
    h.triggerDateTime = i.triggerDateTime;
    h.groupName = i.groupName;
    h.status = i.status;
    h.measChCount = i.measChCount;
    h.mathChCount = i.mathChCount;
    h.dataCount = i.dataCount;
    h.triggerNo = i.triggerNo;
    return h;
}

// userdef1 .. userdef4 (k from 1) as the option file holds it now, kept in memory too;
// what memory holds when the run has no option file.
std::string read_userdef(Program& ctx, int k);

class SheetReport {
  public:
    virtual ~SheetReport() = default;
    // 0 when the report was made; 1 when it stopped (damaged file, a failed reader or
    // step; the failure is logged).
    int run();

  protected:
    SheetReport(Program& ctx, const std::string& source, const std::string& reportBase,
                bool interactive, std::string runName);

    virtual int convert() = 0;

    // Opening: false when the target format is none of CSV and XLS (logged).
    bool open_report();
    // "Filename", the free texts of the option file, "Software".
    void write_head();
    // The header block of HeaderRows, the sample-rate rule included.
    void write_header_rows(const HeaderRows& h);
    // The damaged-file line of a non-interactive run; closes the report.
    int stop_damaged();
    // After "Sample Rate": a whole-second rate switches the time column to plain times
    // for the rest of the program run.
    void note_sample_rate(const std::string& samplingInt);
    // The channel arrays for `all` channels, of which the first `read` are read.
    void size_channels(std::int64_t all, std::int64_t read);
    // The highest selected channel, the selection and the columns; the type branch.
    // False when the file type is neither event nor display file.
    bool plan(const std::string& fileType, bool& eventFile);
    // The same for a family with one kind of file.
    void plan_channels(bool eventFile);
    // The highest selected channel ("ALL" counts as 60); the field array starts clean.
    void find_highest();
    // The channel header rows. With `scaleValues` rows 4 and 5 carry the two doubles
    // under the label 0; without, they are "Scale min" and "Scale max" with the texts of
    // those arrays (empty unless the family fills them).
    void write_channel_header(bool eventFile, bool scaleValues, std::string_view stepText);
    // From the type branch on: the channel header rows (step texts for event and display
    // files) and, with measurementsinclusive, `samples(eventFile)`. Nothing for a file that
    // is neither an event nor a display file.
    void write_channel_part(const std::string& fileType, bool scaleValues,
                            std::string_view eventStep, std::string_view displayStep,
                            const std::function<void(bool)>& samples);
    // The channel records of measuring and math channels (arrays sized for the extra
    // channels too), each read by `read(index from 0, record)`; with `logarithmic` the
    // channels whose scale kind says so are marked.
    template <class Channel, class Read>
    void read_channel_records(std::int64_t meas, std::int64_t math, std::int64_t ext,
                              bool logarithmic, Read read);
    // Row of column titles.
    void write_value_titles(bool eventFile);
    // One row per sample from the cursor. Event-file values have `eventType` and, with
    // `eventLineEnd`, the line-end flag; display files write minimum and maximum as text
    // cells. Channels marked in `logScale_` show fkt_logvalue of their value.
    void write_sample_rows(SampleCursor& cursor, std::int32_t count, bool eventFile,
                           std::int32_t eventType, bool eventLineEnd);
    // "Messages" with the count; with messageinclusive the list of events read by
    // `event(index, out)`, then the trigger row. A family whose messages belong to a group
    // passes `group`, which gives the group of the event just read: a column "Group" ends
    // each line.
    void write_message_block(std::int32_t count,
                             const std::function<void(std::int32_t, VTEventInfo&)>& event,
                             std::int32_t triggerNo, const std::string& triggerDate,
                             const std::string& triggerTime,
                             const std::function<std::int32_t()>& group = nullptr);
    int close_output();
    void close_quietly();

    void set_step(int no, std::string_view words);
    void status(std::string_view text);
    // A record count from the header drives a loop of reader calls: a count no file of
    // this size can hold is a damaged header, not a long list.
    void check_records(std::int32_t count, const char* what) const;

    std::int32_t sheet_row() const;
    std::int32_t column(std::int64_t offset) const;
    void put(std::int64_t offset, const CellValue& v, bool end, std::int32_t type);
    void put_at(std::int32_t col, const CellValue& v, bool end, std::int32_t type);
    // Ends a line whose last column was not reached; places nothing.
    void end_line();
    void next_row();
    void pair_row(const std::string& label, const CellValue& value, std::int32_t type = 0);

    template <class Element>
    void channel_row(const CellValue& label, bool labelTwice, std::int32_t type, Element element);

    // A channel record of the VT shape into the arrays at index `at`: decimals, "Color"
    // from number1, the four further numbers, the scale, the number as text, the unit and
    // as "Name" the tag, else the channel's identifier. Where logScale_ is sized, a channel
    // whose number3 is 3 is marked logarithmic.
    template <class Channel>
    void store_channel(std::size_t at, const Channel& ci);

    Program& ctx_;
    std::string source_, base_;
    bool interactive_;
    std::string runName_;
    std::string step_;
    int stepNo_ = 0;

    std::int16_t fmt_ = 0;
    bool opened_ = false;
    std::int32_t row_ = 1, col_ = 1, index_ = 0, userRows_ = 0;
    std::int32_t highest_ = 0;  // highest selected channel

    ChannelArrays ch_;
    std::int32_t channels_ = 0;  // measuring + math
    std::vector<bool> shown_;
    std::vector<std::int32_t> columns_;
    std::vector<bool> logScale_;  // by channel index; empty: no channel is logarithmic
};

// One channel header row: the label at col (twice for the marked rows), then every
// selected channel at its column up to the highest selected channel.
template <class Element>
void SheetReport::channel_row(const CellValue& label, bool labelTwice, std::int32_t type,
                              Element element) {
    next_row();
    put(0, label, false, 0);
    if (labelTwice) put(0, element(0), false, type);
    bool endOfLine = false;
    for (std::int32_t c = 1; c <= channels_; ++c) {
        const auto at = static_cast<std::size_t>(c);
        if (ch_.chNo[at] == highest_) endOfLine = true;
        if (shown_[at]) put_at(columns_[at], element(c), endOfLine, type);
        if (endOfLine) break;
    }
    if (!endOfLine) end_line();
}

template <class Channel, class Read>
void SheetReport::read_channel_records(std::int64_t meas, std::int64_t math, std::int64_t ext,
                                       bool logarithmic, Read read) {
    set_step(8, " - Daten werden jetzt convertiert...(Kanalheader definieren)");
    size_channels(meas + math + ext + 1, meas + math);
    if (logarithmic) logScale_.assign(static_cast<std::size_t>(channels_) + 1, false);
    for (std::int32_t c = 1; c <= channels_; ++c) {
        Channel ci;
        read(c - 1, ci);
        store_channel(static_cast<std::size_t>(c), ci);
    }
}

template <class Channel>
void SheetReport::store_channel(std::size_t at, const Channel& ci) {
    constexpr std::int32_t kLogarithmic = 3;
    ch_.decimals[at] = ci.decimals;
    ch_.color[at] = std::to_string(ci.number1);
    ch_.number2[at] = ci.number2;
    ch_.number3[at] = ci.number3;
    ch_.number4[at] = ci.number4;
    ch_.number5[at] = ci.number5;
    ch_.scaleLow[at] = ci.scaleLow;
    ch_.scaleHigh[at] = ci.scaleHigh;
    if constexpr (requires { ci.dataType; }) ch_.dataType[at] = ci.dataType;
    ch_.chNo[at] = ci.chNo;
    ch_.number[at] = std::to_string(ci.chNo);
    ch_.unit[at] = ci.unit;
    ch_.name[at] = ci.tag.empty() ? ci.channel : ci.tag;
    if (at < logScale_.size()) logScale_[at] = ci.number3 == kLogarithmic;
}

}  // namespace qumbrel
