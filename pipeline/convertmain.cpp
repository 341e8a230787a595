#include "pipeline/convertmain.h"

#include <cstring>
#include <filesystem>

#include "frame/apifile.h"
#include "frame/language.h"
#include "frame/log.h"
#include "frame/options_io.h"
#include "frame/vbformat.h"
#include "pipeline/family_table.h"
#include "pipeline/name_composer.h"
#include "pipeline/register.h"
#include "pipeline/source_lock.h"
#include "pipeline/xtimer.h"
#include "reports/excelfile.h"
#include "reports/valuesink.h"

namespace qumbrel {

namespace {

constexpr const char* kTrapName = "fkt_convertmain of Modul mod_convert_main";

bool folder_exists(const std::string& path) {
    std::error_code ec;
    return !path.empty() && std::filesystem::is_directory(path, ec);
}

std::string with_separator(std::string path) {
    if (path.empty() || path.back() != '/') path += '/';
    return path;
}

// An option text compared with the number 1.
bool equals_one(const std::string& text, const Program& ctx) {
    const auto v = vb::CDbl(text, ctx.regional.profile());
    return v && *v == 1.0;
}

// Lists a line when the status list is up and lets pending events run.
void status(Program& ctx, const std::string& text) {
    if (!ctx.host.status_list_up()) return;
    fkt_lststatus(ctx, text);
    ctx.host.pump_events();
}

void report_missing_path(Program& ctx, const std::string& path) {
    report_plain(ctx, fkt_translate(ctx, "Pathnotexist"), path);
}

// A family in the table whose generator this build lacks: the file is marked failed
// rather than disposed of without a report.
int missing_generator(Program& ctx, const std::string& source, std::string_view what) {
    ctx.err.clear();
    ctx.err.number = errnum::kInvalidArgument;
    ctx.err.source = ctx.info.baseName;
    ctx.err.description =
        translate_or(ctx, "nogenerator", "This report is not available in this build:") + " " +
        std::string(what);
    fkt_errorreport(ctx, kTrapName, source);
    ctx.err.clear();
    return 1;
}

// A failure of this run that is no generator's: error log and alert, under the driver.
void report_failure(Program& ctx, int number, const std::string& text, const std::string& extra,
                    int step = 0) {
    ctx.err.clear();
    ctx.err.number = number;
    ctx.err.line = step;
    ctx.err.source = ctx.info.baseName;
    ctx.err.description = text;
    fkt_errorreport(ctx, kTrapName, extra);
    ctx.err.clear();
}

std::string quoted_name(const std::string& path) {
    return "'" + Cls_APIFile::GetFileName(path) + "'";
}

// Why a source that its extension assigns to a family is none of it ("" when it is).
std::string not_of_family(Program& ctx, const FamilyFunctions& functions,
                          const std::string& source) {
    if (!functions.typeCheck) return {};
    std::error_code ec;
    if (std::filesystem::file_size(source, ec) == 0 && !ec) return "the file is empty";
    return functions.typeCheck(ctx, source);
}

}  // namespace

ConvertOutcome fkt_convertmain(Program& ctx, const std::string& source,
                               const std::string& subfolder, const std::string& targetName,
                               Flag interactive) {
    ConvertOutcome outcome;
    xTimer timer(ctx.clock);
    Options& o = ctx.opt;
    int step = 1;
    auto list_time = [&] {
        if (ctx.host.status_list_up())
            fkt_lststatus(ctx, fkt_translate(ctx, "time") +
                                   vb::Format(timer.RunTime(), "0.00 ms", ctx.regional.profile()));
    };
    try {
        const std::string name = Cls_APIFile::GetFileName(source);
        Cls_APIFile api;
        api.io = ctx.files;
        api.RenameOnCollision = true;
        ctx.state<SinkState>().csv.set_io(ctx.files);
        excel_file(ctx).set_io(ctx.files);

        // Only a regular file is read or disposed of, and only by one run at a time.
        const SourceLock lock(source);
        switch (lock.state()) {
            case SourceLock::State::Locked:
                break;
            case SourceLock::State::Busy:
                fkt_logevent(ctx, "file locked by another run, skipped: " + source, kFalse, 2);
                status(ctx, translate_or(ctx, "sourcelocked",
                                         "The source file is being converted by another "
                                         "process and is skipped:") +
                                " " + source);
                outcome.skipped = true;
                return outcome;
            case SourceLock::State::Missing:
                if (is_set(interactive) || ctx.run.strSourceFile == source) {
                    report_failure(ctx, errnum::kFileNotFound,
                                   translate_or(ctx, "filenotexist", "The file does not exist:") +
                                       " " + source,
                                   source, step);
                    outcome.notRegular = true;
                    return outcome;
                }
                // Gone since the folder was listed: another run took it.
                fkt_logevent(ctx, "file gone before its conversion, skipped: " + source, kFalse, 2);
                outcome.skipped = true;
                return outcome;
            case SourceLock::State::NotRegular:
                report_failure(ctx, errnum::kPathFileAccessError,
                               quoted_name(source) + " " +
                                   translate_or(ctx, "notregularfile",
                                                "is not a regular file and is left alone:") +
                                   " " + source,
                               source, step);
                outcome.notRegular = true;
                return outcome;
            case SourceLock::State::Failed:
                report_failure(ctx, errnum::kPathFileAccessError,
                               quoted_name(source) + ": " + std::strerror(lock.error_number()),
                               source, step);
                outcome.notRegular = true;
                return outcome;
        }

        // One parse of the file serves every reader of this conversion.
        std::shared_ptr<void> held;
        {
            const auto fam = family_of_extension(Cls_APIFile::GetFileExtension(source, true));
            const FamilyFunctions* f = fam ? &family_table(ctx).of(fam->family) : nullptr;
            if (f && f->holdOpen) held = f->holdOpen(ctx, source);
        }

        step = 2;
        bool alreadyRegistered = false;
        if (o.binfilemodus == 2 &&
            is_set(fkt_CompareStringInFile(ctx, ctx.run.strRegisterFile, name))) {
            fkt_logevent(ctx, "file already compiled: " + source, kFalse, 2);
            if (is_set(interactive) && ctx.host.main_window_opened()) {
                AlertRequest alert;
                alert.text = fkt_translate(ctx, "allreadycompiled") + "\r\n" + name + "\r\n\r\n" +
                             vb::FormatDate(ctx.clock.now(), "Short Time", ctx.regional.profile());
                alert.seconds = 4;
                // 0xC0FFFF as stored (blue, green, red): light yellow.
                alert.red = 0xFF;
                alert.green = 0xFF;
                alert.blue = 0xC0;
                ctx.host.show_alert(alert);
                // Only the run page's second conversion keeps its one register line; a
                // one-shot run, which shows no alert, registers the file once more.
                alreadyRegistered = true;
            }
            if (!is_set(interactive)) {
                outcome.skipped = true;
                return outcome;
            }
        }

        step = 3;
        timer.Calibrieren();
        timer.Start();
        step = 4;
        fkt_reloadoptions(ctx);
        step = 5;
        fkt_convertfilename(ctx, source);

        step = 6;
        if (o.targetpathRaw.find('$') != std::string::npos) {
            o.targetpath = fkt_FormatName(ctx, o.targetpathRaw, kTrue);
            bool created = folder_exists(o.targetpath) || Cls_APIFile::MakeFolderTree(o.targetpath);
            // A source folder shorter than 3 characters follows the target folder (step 9),
            // so there is nothing of its own to compose or create.
            if (o.binfilemodus == 0 && o.targetpathsourcefileRaw.size() >= 3) {
                o.targetpathsourcefile = fkt_FormatName(ctx, o.targetpathsourcefileRaw, kTrue);
                if (!folder_exists(o.targetpathsourcefile))
                    created = Cls_APIFile::MakeFolderTree(o.targetpathsourcefile);
            }
            if (!created) {
                report_missing_path(ctx, o.targetpath);
                outcome.pathMissing = true;
                return outcome;
            }
        } else if (!folder_exists(o.targetpath)) {
            report_missing_path(ctx, o.targetpath);
            outcome.pathMissing = true;
            return outcome;
        }

        step = 7;
        const std::string sourceExt = Cls_APIFile::GetFileExtension(source, true);
        step = 8;
        status(ctx, fkt_translate(ctx, "startconverting"));

        step = 9;
        const std::string targetFolder = with_separator(o.targetpath);
        const std::string sourceTargetFolder = with_separator(
            o.targetpathsourcefile.size() < 3 ? targetFolder : o.targetpathsourcefile);

        step = 10;
        const std::string composedName = fkt_FormatName(ctx, o.targetnameformat, kFalse);
        const bool fda = is_set(ctx.run.bFda);
        std::string reportBase;
        if (fda) {
            reportBase = with_separator(Cls_APIFile::GetWindowsSpecialFolder(2)) + composedName;
        } else {
            reportBase = targetFolder + subfolder + composedName;
            if (!targetName.empty()) reportBase = targetName;
            if (!subfolder.empty() && !folder_exists(targetFolder + subfolder))
                Cls_APIFile::MakeFolderTree(targetFolder + subfolder);
        }

        step = 11;
        FamilyTable& table = family_table(ctx);
        const auto family = family_of_extension(sourceExt);
        FamilyFunctions* functions = family ? &table.of(family->family) : nullptr;
        // Why the file is no recorder file of its family; such a file gets no report.
        std::string notRecorder;
        if (!functions)
            notRecorder = "no recorder family reads the extension \"" + sourceExt + "\"";
        else
            notRecorder = not_of_family(ctx, *functions, source);
        auto run = [&](const ReportGenerator& gen, const std::string& base,
                       std::string_view what) -> int {
            if (!notRecorder.empty()) {
                const std::string familyName =
                    family ? std::string(family->readerModule.substr(3, 2)) + " " : "";
                std::string text =
                    translate_or(ctx, "notrecorderfile", "is not a %1recorder file:");
                if (const auto at = text.find("%1"); at != std::string::npos)
                    text.replace(at, 2, familyName);
                report_failure(ctx, errnum::kInvalidArgument,
                               quoted_name(source) + " " + text + " " + notRecorder, source, step);
                return 1;
            }
            if (!gen) return missing_generator(ctx, source, what);
            return gen(ctx, source, base, interactive);
        };
        // Renames a finished report into place; a failure fails the conversion.
        auto finish = [&](const std::string& from, const std::string& to) -> bool {
            const int rc = api.RenameFile(from, to);
            if (rc == 0) return true;
            report_failure(ctx, errnum::kPathFileAccessError,
                           "rename " + from + " -> " + to + ": " + std::strerror(rc), source, step);
            return false;
        };
        const bool up = ctx.host.status_list_up();
        int errorCount = 0;
        bool excelFailed = false;
        // The report stands complete under its final name (or was printed and deleted as
        // asked): only then may delete mode take the source.
        bool reportComplete = o.noconversion != 0;
        if (o.noconversion == 0) {
            fkt_logevent(ctx, "convert file: " + source, kFalse, 2);
            switch (o.targetformat) {
                case 0: {
                    step = 12;
                    if (up && !fda) status(ctx, reportBase + ".tmp");
                    errorCount =
                        run(functions ? functions->convertCSVXLS : nullptr, reportBase, "CSV");
                    std::string finalName =
                        targetName.empty() ? reportBase + "." + o.fileextension : reportBase;
                    if (errorCount > 0) {
                        finalName += ".Error." + o.fileextension;
                        if (std::filesystem::exists(reportBase + ".tmp"))
                            finish(reportBase + ".tmp", finalName);
                    } else if (finish(reportBase + ".tmp", finalName)) {
                        reportComplete = true;
                        if (is_set(o.delreportfile)) api.DeleteComfort(finalName, false, false);
                    } else {
                        errorCount = 1;
                    }
                    break;
                }
                case 1: {
                    step = 13;
                    if (up && !fda) status(ctx, reportBase + ".xls");
                    errorCount =
                        run(functions ? functions->convertCSVXLS : nullptr, reportBase, "XLS");
                    if (errorCount > 0) {
                        if (std::filesystem::exists(reportBase + ".xls"))
                            finish(reportBase + ".xls", reportBase + ".Error.xls");
                    } else if (std::filesystem::exists(reportBase + ".xls") ||
                               is_set(o.delreportfile)) {
                        reportComplete = true;
                        if (is_set(o.delreportfile))
                            api.DeleteComfort(reportBase + ".xls", false, false);
                    }
                    break;
                }
                case 2: {
                    step = 14;
                    auto& session = table.templates;
                    if (!session.excelformat || !session.exceltemplate) {
                        // Without a spreadsheet engine the source stays for a later run.
                        missing_generator(ctx, source, "template workbook");
                        errorCount = 1;
                        excelFailed = true;
                        break;
                    }
                    const std::string ext =
                        session.excelformat(ctx, o.excelsourcefile, to_flag(o.runexcelmakro != 0));
                    // A workbook is filled under a hidden name in its folder and takes the
                    // report's name only when it is finished: a killed run leaves no
                    // unfilled copy that looks like a report.
                    const auto hidden = [](const std::string& base) {
                        const std::filesystem::path p(base);
                        return (p.parent_path() / ("." + p.filename().string() + ".filling"))
                            .string();
                    };
                    const auto place = [&](const std::string& from, const std::string& to) {
                        std::error_code ec;
                        return std::filesystem::exists(from, ec) && finish(from, to);
                    };
                    const std::string work = hidden(reportBase);
                    session.exceltemplate(ctx, o.excelsourcefile, work + ext);
                    if (up && !fda) status(ctx, reportBase + ext);
                    errorCount = run(functions ? functions->convertXLSTPL : nullptr, work,
                                     "template workbook");
                    // A report that took its failure path is marked, and its source stays.
                    const auto failedNow = [&] {
                        return session.excelFailed && session.excelFailed(ctx);
                    };
                    if (failedNow() && errorCount == 0) errorCount = 1;
                    // A workbook whose only purpose was printing is kept when it could
                    // not be printed.
                    const auto drop_printed = [&](const std::string& workbook) {
                        if (session.printFailed && session.printFailed(ctx)) {
                            fkt_logevent(ctx, "not printed, the report is kept: " + workbook,
                                         kFalse, 2);
                            status(ctx, translate_or(ctx, "notprintedkept",
                                                     "Not printed; the report is kept:") +
                                            " " + workbook);
                            return;
                        }
                        api.DeleteComfort(workbook, false, false);
                    };
                    if (errorCount >= 1) {
                        place(work + ext, reportBase + ".Error" + ext);
                    } else if (!place(work + ext, reportBase + ext)) {
                        errorCount = 1;  // no finished workbook stands under its name
                    } else if (is_set(o.delreportfile)) {
                        drop_printed(reportBase + ext);
                    }
                    if (vb::Val(o.excelsourcefilealarmseparate) == 1 &&
                        (is_set(o.messageinclusive) || is_set(o.alarminclusive))) {
                        const std::string suffix = fkt_filterillegal(
                            o.almlsuffix.empty() ? std::string("_AL_ML") : o.almlsuffix,
                            to_flag(o.runexcelmakro != 0));
                        const std::string alarmWork = hidden(reportBase + suffix);
                        session.exceltemplate(ctx, o.excelsourcefilealarm, alarmWork + ext);
                        if (up && !fda) status(ctx, reportBase + suffix + ext);
                        int alarmErrors = 0;
                        if (functions && functions->convertXLSTPLALML)
                            alarmErrors = functions->convertXLSTPLALML(
                                ctx, source, alarmWork, to_flag(o.runexcelmakro != 0));
                        else if (functions)
                            alarmErrors = missing_generator(ctx, source, "alarm workbook");
                        if (failedNow() && alarmErrors == 0) alarmErrors = 1;
                        if (!place(alarmWork + ext, reportBase + suffix + ext) && alarmErrors == 0)
                            alarmErrors = 1;
                        // The first workbook's count gives way (kept so); a failure of either
                        // still keeps the source.
                        if (errorCount == 0 && alarmErrors == 0) reportComplete = true;
                        errorCount = alarmErrors;
                        // The first workbook takes the mark, not the alarm workbook.
                        if (alarmErrors > 0)
                            api.RenameFile(reportBase + ext, reportBase + ".Error" + ext);
                        else if (is_set(o.delreportfile))
                            drop_printed(reportBase + suffix + ext);
                    } else if (errorCount == 0) {
                        reportComplete = true;
                    }
                    if (session.excelFailed) excelFailed = session.excelFailed(ctx);
                    break;
                }
                case 3: {
                    step = 15;
                    if (up) status(ctx, reportBase + ".tmp");
                    if (!notRecorder.empty())
                        errorCount = run(nullptr, reportBase, "customer text");
                    else if (table.customerReport)
                        errorCount = table.customerReport(ctx, source, reportBase, interactive);
                    else
                        errorCount = missing_generator(ctx, source, "customer text");
                    const std::string finalName =
                        targetName.empty() ? reportBase + ".txt" : reportBase;
                    if (std::filesystem::exists(reportBase + ".tmp")) {
                        if (finish(reportBase + ".tmp", finalName) && errorCount == 0)
                            reportComplete = true;
                    }
                    ctx.host.pump_events();
                    break;
                }
                default:
                    errorCount = missing_generator(
                        ctx, source, "targetformat=" + std::to_string(o.targetformat));
                    break;
            }
        }
        if (!reportComplete && errorCount == 0) errorCount = 1;
        outcome.errorCount = errorCount;

        // The library lets go of the file before it is moved or deleted.
        held.reset();

        step = 16;
        if (!excelFailed && !is_set(ctx.run.bDebug)) {
            const bool sameName = equals_one(o.sourcenamesametarget, ctx) && o.targetname == 1;
            auto move_source = [&] {
                status(ctx, fkt_translate(ctx, "movefile"));
                const std::string folder = sourceTargetFolder + subfolder;
                if (!folder_exists(folder)) Cls_APIFile::MakeFolderTree(folder);
                std::string target;
                if (sameName) {
                    target = with_separator(folder) + composedName +
                             (errorCount > 0 ? ".Error." : ".") + sourceExt;
                } else {
                    target = with_separator(folder) + name +
                             (errorCount > 0 ? ".Error." + sourceExt : std::string());
                }
                std::string movedTo;
                if (int rc = api.MoveFile(source, target, &movedTo); rc != 0) {
                    outcome.moveFailed = true;
                    report_failure(
                        ctx, errnum::kPathFileAccessError,
                        translate_or(ctx, "movefailed", "The source file could not be moved:") +
                            " " + source + " -> " + target + ": " + std::strerror(rc),
                        source, step);
                } else if (movedTo != target) {
                    fkt_logevent(ctx, "name taken, source moved to: " + movedTo, kFalse, 2);
                    status(ctx, movedTo);
                }
            };
            switch (o.binfilemodus) {
                case 0:
                    move_source();
                    break;
                case 1:
                    if (errorCount > 0 || !reportComplete) {
                        // Nothing is deleted unconverted: a failed source is kept as in move
                        // mode, with its mark.
                        status(ctx, translate_or(ctx, "reportfailed",
                                                 "The report could not be completed; the "
                                                 "source file is kept:") +
                                        " " + source);
                        move_source();
                        break;
                    }
                    status(ctx, fkt_translate(ctx, "deletefile"));
                    if (int rc = api.DeleteComfort(source, false, false); rc != 0)
                        report_failure(ctx, errnum::kPathFileAccessError,
                                       "delete " + source + ": " + std::strerror(rc), source, step);
                    break;
                case 2: {
                    const std::string errorMark =
                        errorCount > 0 ? ".Error." + sourceExt : std::string();
                    if (!errorMark.empty()) api.MoveFile(source, source + errorMark);
                    // Bare names, relative to the working folder: kept as it is.
                    if (sameName) api.MoveFile(name, composedName + "." + sourceExt + errorMark);
                    if (!alreadyRegistered)
                        fkt_AppendStringToFile(ctx, ctx.run.strRegisterFile,
                                               name + errorMark + "    " + composedName + "." +
                                                   sourceExt + errorMark + "\r\n");
                    break;
                }
                default:
                    break;
            }
        }

        step = 17;
        status(ctx, fkt_translate(ctx, "finished"));
        timer.Halt();
        list_time();
        return outcome;
    } catch (...) {
        report_trapped(ctx, kTrapName, step);
        timer.Halt();
        list_time();
        outcome.runtimeError = true;
        return outcome;
    }
}

}  // namespace qumbrel
