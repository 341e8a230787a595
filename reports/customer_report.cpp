#include "reports/customer_report.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

#include "frame/apifile.h"
#include "frame/errors.h"
#include "frame/language.h"
#include "frame/log.h"
#include "frame/text.h"
#include "frame/timecompare.h"
#include "frame/vbformat.h"
#include "recorder/hn_reader.h"
#include "recorder/vq_reader.h"
#include "recorder/vt_reader.h"
#include "recorder/vu_reader.h"
#include "reports/output.h"
#include "reports/printer.h"
#include "reports/valuesink.h"

namespace qumbrel {
namespace {

constexpr const char* kTrapName = "fkt_convertKaldersteyn of Modul mod_convertcustomer";

// What the report needs of a file, whatever its family.
struct CustomerFile {
    std::string fileType;
    std::int32_t dataCount = 0;
    std::vector<std::int32_t> chNo;
    std::vector<std::string> titles;
    // Opens the samples; eventFile is the branch's flag. Null: the family cannot.
    std::function<std::unique_ptr<SampleCursor>(bool eventFile)> open;
};

template <class Channel>
void add_channel(CustomerFile& f, const Channel& ci) {
    f.chNo.push_back(ci.chNo);
    f.titles.push_back(ci.tag.empty() ? ci.channel : ci.tag);
}

std::size_t channel_count(std::int32_t meas, std::int32_t math) {
    return static_cast<std::size_t>(std::clamp(meas + math, 0, 1000));
}

// The channel numbers as decimal texts, and the decimals, of the channels read.
struct Plan {
    std::vector<std::string> numbers;
    std::vector<std::int32_t> decimals, types;
};

bool read_file(Program& ctx, const std::string& source, const std::string& ext, CustomerFile& f) {
    const std::size_t block = ctx.state<SampleBlockSetting>().samples;
    auto plan = std::make_shared<Plan>();
    if (ext == "OGE" || ext == "OGD") {
        VTInfo i;
        VTGetInfo(ctx, source, i);
        f.fileType = i.fileType;
        f.dataCount = i.dataCount;
        for (std::size_t c = 0; c < channel_count(i.measChCount, i.mathChCount); ++c) {
            VTChannelInfo ci;
            VTGetChDataInfo(ctx, source, static_cast<std::int32_t>(c), ci);
            add_channel(f, ci);
            plan->numbers.push_back(std::to_string(ci.chNo));
            plan->decimals.push_back(ci.decimals);
        }
        f.open = [&ctx, source, plan, count = i.dataCount, block](bool ev) {
            return VTOpenMeasData(ctx, source, plan->numbers, count, plan->decimals, to_flag(ev),
                                  block);
        };
        return true;
    }
    if (ext == "OSE" || ext == "OSD" || ext == "OAE" || ext == "OAD") {
        VUInfo i;
        VUGetInfo(ctx, 0, source, i);
        f.fileType = i.fileType;
        f.dataCount = i.dataCount;
        for (std::size_t c = 0; c < channel_count(i.measChCount, i.mathChCount); ++c) {
            VUChannelInfo ci;
            VUGetChDataInfo(ctx, 0, source, static_cast<std::int32_t>(c), ci);
            add_channel(f, ci);
            plan->numbers.push_back(std::to_string(ci.chNo));
            plan->decimals.push_back(ci.decimals);
            plan->types.push_back(ci.dataType);
        }
        const VUTimeBase base = vu_time_base(ctx, i.startTime, i.samplingInt);
        f.open = [&ctx, source, plan, count = i.dataCount, base, block](bool ev) {
            return VUOpenMeasData(ctx, 0, source, plan->numbers, count, plan->decimals, plan->types,
                                  base, to_flag(ev), block);
        };
        return true;
    }
    if (ext == "OBE" || ext == "OBD") {
        VQClearRecords(ctx);
        VQInfo& i = ctx.state<VQRecords>().info;
        VQGetInfo(ctx, 0, source, i);
        f.fileType = i.fileType;
        f.dataCount = i.dataCount;
        for (std::size_t c = 0; c < channel_count(i.measChCount, i.mathChCount); ++c) {
            VQChannelInfo ci;
            VQGetChDataInfo(ctx, 0, source, static_cast<std::int32_t>(c), ci);
            add_channel(f, ci);
            plan->numbers.push_back(std::to_string(ci.chNo));
            plan->decimals.push_back(ci.decimals);
        }
        f.open = [&ctx, source, plan, count = i.dataCount, block](bool ev) {
            return VQOpenMeasData(ctx, 0, source, plan->numbers, count, plan->decimals, to_flag(ev),
                                  block);
        };
        return true;
    }
    if (ext == "HND" || ext == "HNS") {
        HNInfo i;
        HNGetInfo(ctx, 0, source, i);
        f.fileType = i.fileType;
        f.dataCount = i.dataCount;
        auto plans = std::make_shared<std::vector<HNChannelPlan>>();
        for (std::size_t c = 0; c < channel_count(i.measChCount, 0); ++c) {
            HNChannelInfo ci;
            HNGetChDataInfo(ctx, 0, source, static_cast<std::int32_t>(c), ci);
            f.chNo.push_back(ci.channelNo);
            f.titles.push_back(ci.tag.empty() ? ci.text : ci.tag);
            plans->push_back(HNChannelPlan{static_cast<std::int32_t>(c), ci.fifoId, ci.fifoType,
                                           ci.dataType, ci.flags, ci.decimals,
                                           std::to_string(ci.channelNo)});
        }
        const VUTimeBase base = vu_time_base(ctx, i.startTime, i.samplingInt);
        f.open = [&ctx, source, plans, count = i.dataCount, base,
                  block](bool ev) -> std::unique_ptr<SampleCursor> {
            if (!ev) return nullptr;  // the HN family has no display branch
            return HNOpenMeasData(ctx, 0, source, *plans, count, false, base, block);
        };
        return true;
    }
    return false;  // another family: nothing is read, the report stays empty
}

std::string value_text(Program& ctx, const SampleCell& c) {
    switch (c.kind) {
        case SampleKind::Int16:
        case SampleKind::Int32:
            return std::to_string(static_cast<std::int64_t>(c.value));
        case SampleKind::Double:
            return vb::CStr(c.value, ctx.regional.profile());
        case SampleKind::Empty:
            break;
    }
    return {};
}

// The date of a sample in the fixed form "dd.MM.yy", whatever the regional separator.
std::string fixed_date(Program& ctx, const std::string& date) {
    const auto d = vb::CDate(date, ctx.regional.profile());
    return d ? vb::FormatDate(*d, "dd.MM.yy", ctx.regional.profile()) : date;
}

// The highest selected channel: the largest entry, or 60 for "ALL".
std::int32_t highest_channel(Program& ctx) {
    std::int32_t highest = 0;
    for (const std::string& entry : ctx.opt.vChannelList) {
        std::string upper = entry;
        for (char& ch : upper) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
        if (upper == "ALL") return 60;
        const double v = vb::Val(entry);
        if (v > highest && v < 2147483647.0) highest = static_cast<std::int32_t>(v);
    }
    return highest;
}

void status(Program& ctx, const std::string& text) {
    if (ctx.host.status_list_up()) fkt_lststatus(ctx, text);
}

}  // namespace

int fkt_convertKaldersteyn(Program& ctx, const std::string& source, const std::string& reportBase,
                           Flag) {
    OutputFile out(ctx.files);
    int step = 1;
    try {
        status(ctx, fkt_translate(ctx, "createfile"));
        out.open(reportBase + ".tmp");
        status(ctx, fkt_translate(ctx, "startconverting"));

        step = 2;
        std::string ext = Cls_APIFile::GetFileExtension(source, true);
        for (char& ch : ext) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
        CustomerFile file;
        const bool served = read_file(ctx, source, ext, file);
        if (served) {
            step = 4;
            const std::int32_t highest = highest_channel(ctx);
            std::string type = file.fileType;
            for (char& ch : type)
                ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
            const bool eventBranch = type == "EVENT FILE" || type == "DATA";
            const bool displayBranch = type == "DISPLAY FILE";
            if (eventBranch || displayBranch) {
                step = 6;
                auto cursor = file.open(eventBranch);
                if (!cursor) {
                    status(ctx, " Error file extension");
                } else {
                    step = 7;
                    bool timeSelect = false;
                    if (const auto ts = vb::CDbl(ctx.opt.TimeSelect, ctx.regional.profile()))
                        timeSelect = *ts == 1;
                    const std::string& sep = ctx.opt.listseparator;
                    SampleBlock block;
                    std::int32_t s = 0;
                    std::string line;
                    while (s < file.dataCount && cursor->next(block)) {
                        for (std::size_t r = 0; r < block.count && s < file.dataCount; ++r) {
                            ++s;
                            const std::string_view time =
                                std::string_view(block.timesWithMs[r]).substr(0, 8);
                            if (timeSelect) {
                                Flag in = kFalse;
                                fkt_timeinwindow(time, ctx.opt.TimeStart, ctx.opt.TimeStop, in);
                                if (!is_set(in)) continue;
                            }
                            const std::string stamp = fixed_date(ctx, std::string(block.dates[r])) +
                                                      " " + std::string(time);
                            for (std::size_t c = 0; c < file.chNo.size(); ++c) {
                                const bool last = file.chNo[c] == highest;
                                if (fkt_showchannel(ctx, file.chNo[c])) {
                                    line = file.titles[c] + sep + stamp + sep +
                                           value_text(ctx, block.firstValues.at(r + 1, c + 1));
                                    if (displayBranch)
                                        line += sep + value_text(
                                                          ctx, block.secondValues.at(r + 1, c + 1));
                                    line += "\r\n";
                                    out.write(line);
                                }
                                if (last) break;
                            }
                        }
                        ctx.host.pump_events();
                    }
                    if (cursor->failed()) throw VbError(errnum::kInvalidArgument, "GetMeasData");
                }
            }
        }
        step = 8;
        status(ctx, "close file...");
        out.close();
        status(ctx, "convert finish");
        step = 9;
        if (is_set(ctx.opt.printfile)) {
            status(ctx, "print file " + reportBase + "...");
            PrintFile(ctx, reportBase + ".tmp", ctx.opt.printerorientationland != 0 ? 2 : 1);
            status(ctx, "print file " + reportBase + " finished");
        }
        if (!served) {
            // The report stays empty; its source must not be taken for converted.
            report_plain(ctx, "fkt_convertKaldersteyn(" + source + " " + reportBase +
                                  "): no customer report for files of the extension \"" +
                                  Cls_APIFile::GetFileExtension(source, true) + "\"");
            return 1;
        }
        return 0;
    } catch (...) {
        out.abandon();
        report_trapped(ctx, kTrapName, step, source);
        return 1;
    }
}

}  // namespace qumbrel
