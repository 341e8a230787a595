#include "frame/log.h"

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <new>
#include <stdexcept>
#include <system_error>

#include "frame/eventlogger.h"
#include "frame/vbformat.h"

namespace qumbrel {

namespace {

constexpr long kStatusListLimit = 32760;  // the list control's index is 16 bits

// One write(2) of the whole line with O_APPEND, so lines of two processes never mix.
// A log that cannot be opened or written loses the line.
void append_line(const std::string& path, std::string_view line) noexcept {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (fd < 0) return;
    const char* p = line.data();
    std::size_t left = line.size();
    while (left > 0) {
        const ssize_t n = ::write(fd, p, left);
        if (n <= 0) break;
        p += n;
        left -= static_cast<std::size_t>(n);
    }
    ::close(fd);
}

std::string present_date(const Program& ctx) {
    return vb::FormatDate(ctx.clock.now(), "Short Date", ctx.regional.profile());
}

std::string present_time(const Program& ctx) {
    return vb::FormatDate(ctx.clock.now(), "Long Time", ctx.regional.profile());
}

ErrState classify_current_exception(const Program& ctx) {
    ErrState e;
    e.source = ctx.info.baseName;
    try {
        throw;
    } catch (const VbError& x) {
        e.number = x.number();
        if (!x.source().empty()) e.source = x.source();
        e.description = x.description();
    } catch (const std::bad_alloc&) {
        e.number = errnum::kOutOfMemory;
        e.description = "Out of memory";
    } catch (const std::filesystem::filesystem_error& x) {
        const auto code = x.code();
        if (code == std::errc::no_such_file_or_directory) {
            e.number = errnum::kFileNotFound;
            e.description = "File not found";
        } else if (code == std::errc::permission_denied ||
                   code == std::errc::operation_not_permitted) {
            e.number = errnum::kPermissionDenied;
            e.description = "Permission denied";
        } else {
            e.number = errnum::kPathFileAccessError;
            e.description = "Path/File access error";
        }
        e.description += std::string(": ") + x.what();
    } catch (const std::out_of_range& x) {
        e.number = errnum::kSubscriptOutOfRange;
        e.description = std::string("Subscript out of range: ") + x.what();
    } catch (const std::exception& x) {
        e.number = errnum::kInvalidArgument;
        e.description = std::string("Invalid procedure call or argument: ") + x.what();
    } catch (...) {
        e.number = errnum::kInvalidArgument;
        e.description = "Invalid procedure call or argument";
    }
    return e;
}

}  // namespace

bool fkt_lststatus(Program& ctx, std::string_view text) {
    try {
        if (!ctx.host.status_list_up()) return false;
        ctx.host.focus_status_list();
        if (is_set(ctx.run.bDebug)) {
            std::string line = present_date(ctx);
            line += ' ';
            line += present_time(ctx);
            line += ' ';
            line += text;
            line += "\r\n";
            append_line(ctx.program_file("status.log"), line);
        }
        if (ctx.host.status_line_count() > kStatusListLimit) ctx.host.clear_status_list();
        ctx.host.add_status_line(text);
        ctx.host.pump_events();
        return true;
    } catch (...) {
        ctx.err = classify_current_exception(ctx);
        fkt_errorreport(ctx, "fkt_lststatus of Modul mod_fkt", "");
        ctx.err.clear();
        return false;
    }
}

void fkt_logevent(Program& ctx, std::string_view text, Flag allFlag, int type) {
    // alleventmsg and allFlag both lead to the same call: in a service run everything
    // is logged.
    (void)allFlag;
    if (!is_set(ctx.run.bStartsFromService)) return;
    cls_EventLogger(ctx).WriteLog(text, type);
}

std::string error_log_line(const Program& ctx, std::string_view text) {
    std::string line = present_date(ctx);
    line += ' ';
    line += present_time(ctx);
    line += ' ';
    line += text;
    line += ' ';
    line += "; Errorsource: " + ctx.err.source;
    line += "; Errornumber: " + std::to_string(ctx.err.number);
    line += "; Errorline: " + std::to_string(ctx.err.line);
    line += "; Errordescription: " + ctx.err.description;
    return line;
}

void fkt_errorreport(Program& ctx, std::string_view text, std::string_view extra) {
    try {
        // Take the error first: the calls below may clear it.
        const ErrState e = ctx.err;
        const std::string version = ctx.info.version_text();

        append_line(ctx.program_file("error.log"), error_log_line(ctx, text) + "\r\n");

        if (is_set(ctx.run.bStartsFromService)) {
            cls_EventLogger(ctx).WriteLogEx(
                {e.source + " " + version, e.description + "  " + std::string(extra),
                 std::string(text), "Errorline " + std::to_string(e.line)},
                4, 4);
            return;
        }
        AlertRequest alert;
        alert.text = "Function: " + std::string(text) + "\r\n" + version + "\r\n" +
                     "Error Number: " + std::to_string(e.number) + "\r\n" +
                     "Error Line: " + std::to_string(e.line) + "\r\n" +
                     "Error Description: " + e.description + "\r\n" + std::string(extra) +
                     "\r\n\r\n\r\n" +
                     vb::FormatDate(ctx.clock.now(), "Short Time", ctx.regional.profile());
        alert.seconds = 0;
        alert.red = 255;
        alert.green = 200;
        alert.blue = 200;
        ctx.host.show_alert(alert);
    } catch (...) {
        // The error path never fails its caller.
    }
}

void report_trapped(Program& ctx, std::string_view where, int step, std::string_view extra) {
    ctx.err = classify_current_exception(ctx);
    ctx.err.line = step;
    fkt_errorreport(ctx, where, extra);
    ctx.err.clear();
}

void report_plain(Program& ctx, std::string_view text, std::string_view extra) {
    ctx.err.clear();
    fkt_errorreport(ctx, text, extra);
}

}  // namespace qumbrel
