#include "frame/options_io.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include <string>

#include "frame/codepage.h"
#include "frame/ini.h"
#include "frame/log.h"
#include "frame/profile.h"
#include "frame/registry.h"
#include "frame/text.h"
#include "frame/vbformat.h"

namespace qumbrel {

namespace {

constexpr const char* kStart = "start";
constexpr const char* kFile = "file";
constexpr const char* kUser = "userdefined";

// Reads keys of one file in table order; a number or bool is the leading number of its
// text, so "abc" reads as 0 and a value too big for its type is an overflow error.
struct Reader {
    clsINI& ini;
    int step = 0;

    std::string text(const char* section, const char* key, const std::string& def) {
        ++step;
        return ini.GetKeyValue(section, key, {}, def);
    }
    std::int32_t number(const char* section, const char* key, const std::string& def) {
        return vb::CLng(vb::Val(text(section, key, def)));
    }
    Flag flag(const char* section, const char* key, const std::string& def) {
        return to_flag(vb::Val(text(section, key, def)) != 0);
    }
};

std::string flag_text(Flag f) {
    return is_set(f) ? "1" : "0";
}

bool write_keys(Program& ctx, std::initializer_list<std::pair<const char*, std::string>> keys,
                const char* section) {
    clsINI ini(ctx.run.strOptionFile);
    bool ok = true;
    for (const auto& [key, value] : keys) ok = ini.CreateKeyValue(section, key, value) && ok;
    return ok;
}

// A problem with the option file itself, reported under `where`.
void report_option_file(Program& ctx, const char* where, const std::string& description) {
    ctx.err.clear();
    ctx.err.number = errnum::kPathFileAccessError;
    ctx.err.source = ctx.info.baseName;
    ctx.err.description = description + ctx.run.strOptionFile;
    fkt_errorreport(ctx, where, "");
    ctx.err.clear();
}

bool finish_save(Program& ctx, bool ok) {
    clsINI ini(ctx.run.strOptionFile);
    ok = ini.CreateKeyValue(kFile, "savetoggle", "1") && ok;
    // The same message to the companion service: the folder it watches may have changed.
    ok = ini.CreateKeyValue(kFile, "savetogglesvc", "1") && ok;
    if (!ok) report_option_file(ctx, "fkt_saveoption()", "Option file could not be written: ");
    return ok;
}

void load_keys(Program& ctx, Reader& r) {
    Options& o = ctx.opt;
    o.alleventmsg = r.flag(kStart, "alleventmsg", "0");
    o.sheduler = r.number(kStart, "sheduler", "0");
    o.day = r.number(kStart, "day", "0");
    o.hour = r.text(kStart, "hour", "1");
    o.minute = r.text(kStart, "minute", "0");
    o.autostart = r.number(kStart, "autostart", "0");
    o.filetyp = r.number(kStart, "filetyp", "0");
    o.filetypuserdef = r.text(kStart, "filetypuserdef", "*.hnd");

    o.alleventmsg = r.flag(kFile, "alleventmsg", "0");
    o.sourcepath = r.text(kFile, "sourcepath", "");
    o.targetpathRaw = r.text(kFile, "targetpath", "");
    o.targetpath = o.targetpathRaw;
    o.targetpathsourcefileRaw = r.text(kFile, "targetpathsourcefile", "");
    o.targetpathsourcefile = o.targetpathsourcefileRaw;
    o.binfilemodus = r.number(kFile, "binfilemodus", "0");
    o.noconversion = r.number(kFile, "noconversion", "0");
    o.targetformat = r.number(kFile, "targetformat", "0");
    o.excelsourcefile = r.text(kFile, "excelsourcefile", "");
    o.runexcelmakro = r.number(kFile, "runexcelmakro", "0");
    o.targetname = r.number(kFile, "targetname", "0");
    // The file carries one guard character in front, so leading blanks survive; a file
    // edited by hand without it loses its first character.
    {
        const std::string guarded = r.text(kFile, "targetnameformat", ">$O");
        o.targetnameformat = guarded.substr(utf8_prefix(guarded, 1).size());
    }
    o.fileextension = r.text(kFile, "fileextension", "csv");
    o.sourcenamesametarget = r.text(kFile, "sourcenamesametarget", "0");
    o.row = r.text(kFile, "row", "1");
    o.col = r.text(kFile, "col", "1");
    o.userdef1 = r.text(kFile, "userdef1", "");
    o.userdef2 = r.text(kFile, "userdef2", "");
    o.userdef3 = r.text(kFile, "userdef3", "");
    o.userdef4 = r.text(kFile, "userdef4", "");
    o.measurementsinclusive = r.flag(kFile, "measurementsinclusive", "1");
    o.alarminclusive = r.flag(kFile, "alarminclusive", "0");
    o.messageinclusive = r.flag(kFile, "messageinclusive", "0");
    o.ctrleventinclusive = r.flag(kFile, "ctrleventinclusive", "0");
    o.pveventinclusive = r.flag(kFile, "pveventinclusive", "0");
    o.operatinloginclusive = r.flag(kFile, "operatinloginclusive", "0");
    o.signatureinclusive = r.flag(kFile, "signatureinclusive", "0");
    o.scaleinfoinclusive = r.flag(kFile, "scaleinfoinclusive", "0");
    o.almlsuffix = r.text(kFile, "almlsuffix", "");
    o.excelsourcefilealarmseparate = r.text(kFile, "excelsourcefilealarmseparate", "0");
    o.excelsourcefilealarm = r.text(kFile, "excelsourcefilealarm", "");
    o.language = r.text(kFile, "language", ctx.program_file("deutsch.lng"));
    o.printfile = r.flag(kFile, "printfile", "0");
    o.printfile2 = r.flag(kFile, "printfile2", "0");
    o.printer = r.text(kFile, "printer", "");
    o.printer2 = r.text(kFile, "printer2", "");
    o.printerorientationland = r.number(kFile, "printerorientationland", "0");
    o.delreportfile = r.flag(kFile, "delreportfile", "0");
    o.printpage = r.text(kFile, "printpage", "");
    o.savetoggle = r.number(kFile, "savetoggle", "0");

    o.Channels = r.text(kUser, "Channels", "");
    o.TimeSelect = r.text(kUser, "TimeSelect", "0");
    o.TimeStart = r.text(kUser, "TimeStart", "");
    o.TimeStop = r.text(kUser, "TimeStop", "");
    o.listseparator = r.text(kUser, "listseparator", ctx.run.strListSeparator);
    o.decseparator = r.text(kUser, "decseparator", ctx.run.strDecimalSymbol);
    o.thousseparator = r.text(kUser, "thousseparator", ctx.run.strThousandSeparator);
    o.dateseparator = r.text(kUser, "dateseparator", ctx.run.strDateSeparator);
    o.timeseparator = r.text(kUser, "timeseparator", ctx.run.strTimeSeparator);
}

}  // namespace

void read_regional_values(Program& ctx) {
    ctx.run.strListSeparator = ctx.regional.ListSeparator();
    ctx.run.strDecimalSymbol = ctx.regional.DecimalSymbol();
    ctx.run.strThousandSeparator = ctx.regional.ThousandSeparator();
    ctx.run.strDateSeparator = ctx.regional.DateSeparator();
    ctx.run.strTimeSeparator = ctx.regional.TimeSeparator();
}

void apply_protection_value(Options& opt, const std::string& raw) {
    const std::string value = raw.size() < 20 ? std::string(20, '0') : raw;
    if (value.back() != '1') {
        opt.strProtectionPassword.clear();
        opt.bLoggedIn = kTrue;
        return;
    }
    opt.bLoggedIn = kFalse;
    // Characters 3 to length - 3: the password as hexadecimal pairs.
    const std::string hex = value.substr(2, value.size() - 5);
    std::string bytes;
    for (std::size_t i = 0; i < hex.size(); i += 2) {
        const auto code = static_cast<int>(vb::Val("&H" + hex.substr(i, 2)));
        bytes.push_back(static_cast<char>(code & 0xFF));
    }
    opt.strProtectionPassword = cp1252_to_utf8(bytes);
}

std::string build_protection_value(int seconds, const std::string& password, bool on) {
    char head[3];
    std::snprintf(head, sizeof head, "%02d", std::clamp(seconds, 0, 99));
    std::string value = head;
    for (const unsigned char c : utf8_to_cp1252(password)) {
        char hex[3];
        std::snprintf(hex, sizeof hex, "%X", c);
        value += hex;
    }
    return value + (on ? "001" : "000");
}

void fkt_loadoptionfile(Program& ctx) {
    clsINI ini(ctx.run.strOptionFile);
    Reader r{ini};
    try {
        const auto state = profile::probe(ctx.run.strOptionFile);
        std::error_code sizeError;
        const bool empty = state == profile::FileState::Ok &&
                           std::filesystem::file_size(ctx.run.strOptionFile, sizeError) == 0 &&
                           !sizeError;
        // A file we could not read, or an empty one, is the user's: nothing is written to it.
        ctx.run.optionFileWritable =
            state == profile::FileState::Missing || (state == profile::FileState::Ok && !empty);
        if (empty)
            report_option_file(ctx, "fkt_loadoptionfile()",
                               "Option file is empty; defaults used: ");
        // Not read at all: every option takes its default, and the user is told why.
        if (state == profile::FileState::TooLarge)
            report_option_file(ctx, "fkt_loadoptionfile()",
                               "Option file larger than " + std::to_string(profile::kMaxFileBytes) +
                                   " bytes, not read; defaults used: ");
        if (state == profile::FileState::Unreadable)
            report_option_file(ctx, "fkt_loadoptionfile()",
                               "Option file cannot be read; defaults used: ");
        load_keys(ctx, r);

        Options& o = ctx.opt;
        if (o.printer.empty()) o.printfile = kFalse;
        if (o.printer2.empty()) o.printfile2 = kFalse;
        o.vChannelList = split(o.Channels, "|");
        if (ctx.run.optionFileWritable) ini.CreateKeyValue(kFile, "savetoggle", "0");
        // Values outside their range are named once, with what is done instead.
        if (o.binfilemodus < 0 || o.binfilemodus > 2) {
            report_plain(ctx,
                         "binfilemodus=" + std::to_string(o.binfilemodus) +
                             " is not 0 (move), 1 (delete) or 2 (register): source files "
                             "stay where they are",
                         ctx.run.strOptionFile);
        }
        if (o.targetformat < 0 || o.targetformat > 3) {
            report_plain(ctx,
                         "targetformat=" + std::to_string(o.targetformat) +
                             " is not 0 (CSV), 1 (XLS), 2 (template) or 3 (text): no report "
                             "is written and source files are kept",
                         ctx.run.strOptionFile);
        }
        if (is_set(ctx.run.bFda)) {
            o.targetformat = 2;
            o.printfile = kTrue;
            o.delreportfile = kTrue;
        }

        RegistryStore registry(ctx.program_file("registry.ini"));
        std::string protection;
        registry.ReadRegValue(kProtectionKey, kProtectionValue, protection);
        apply_protection_value(o, protection);
    } catch (...) {
        report_trapped(ctx, "fkt_loadoptionfile()", r.step);
    }
}

bool fkt_reloadoptions(Program& ctx) {
    clsINI ini(ctx.run.strOptionFile);
    if (vb::Val(ini.GetKeyValue(kFile, "savetoggle", {}, std::string("0"))) == 0) return false;
    fkt_loadoptionfile(ctx);
    return true;
}

bool fkt_setsavetoggle(Program& ctx) {
    clsINI ini(ctx.run.strOptionFile);
    const bool a = ini.CreateKeyValue(kFile, "savetoggle", "1");
    const bool b = ini.CreateKeyValue(kFile, "savetogglesvc", "1");
    return a && b;
}

bool fkt_saveoption_run(Program& ctx, const Options& v) {
    const bool ok = write_keys(ctx,
                               {{"sheduler", std::to_string(v.sheduler)},
                                {"day", std::to_string(v.day)},
                                {"hour", v.hour},
                                {"minute", v.minute},
                                {"autostart", std::to_string(v.autostart)},
                                {"filetyp", std::to_string(v.filetyp)},
                                {"filetypuserdef", v.filetypuserdef}},
                               kStart);
    return finish_save(ctx, ok);
}

bool fkt_saveoption_settings(Program& ctx, const Options& v) {
    bool ok = write_keys(ctx,
                         {{"alleventmsg", flag_text(v.alleventmsg)},
                          {"sourcepath", v.sourcepath},
                          {"targetpath", v.targetpathRaw},
                          {"targetpathsourcefile", v.targetpathsourcefileRaw},
                          {"binfilemodus", std::to_string(v.binfilemodus)},
                          {"noconversion", std::to_string(v.noconversion)},
                          {"targetformat", std::to_string(v.targetformat)},
                          {"excelsourcefile", v.excelsourcefile},
                          {"runexcelmakro", std::to_string(v.runexcelmakro)},
                          {"targetname", std::to_string(v.targetname)},
                          {"targetnameformat", ">" + v.targetnameformat},
                          {"fileextension", v.fileextension},
                          {"sourcenamesametarget", v.sourcenamesametarget},
                          {"row", v.row},
                          {"col", v.col},
                          {"userdef1", v.userdef1},
                          {"userdef2", v.userdef2},
                          {"userdef3", v.userdef3},
                          {"userdef4", v.userdef4},
                          {"measurementsinclusive", flag_text(v.measurementsinclusive)},
                          {"alarminclusive", flag_text(v.alarminclusive)},
                          {"messageinclusive", flag_text(v.messageinclusive)},
                          {"ctrleventinclusive", flag_text(v.ctrleventinclusive)},
                          {"pveventinclusive", flag_text(v.pveventinclusive)},
                          {"operatinloginclusive", flag_text(v.operatinloginclusive)},
                          {"signatureinclusive", flag_text(v.signatureinclusive)},
                          {"scaleinfoinclusive", flag_text(v.scaleinfoinclusive)},
                          {"almlsuffix", v.almlsuffix},
                          {"excelsourcefilealarmseparate", v.excelsourcefilealarmseparate},
                          {"excelsourcefilealarm", v.excelsourcefilealarm},
                          {"language", v.language},
                          {"printfile", flag_text(v.printfile)},
                          {"printfile2", flag_text(v.printfile2)},
                          {"printer", v.printer},
                          {"printer2", v.printer2},
                          {"printerorientationland", std::to_string(v.printerorientationland)},
                          {"delreportfile", flag_text(v.delreportfile)},
                          {"printpage", v.printpage}},
                         kFile);
    ok = write_keys(ctx,
                    {{"Channels", v.Channels},
                     {"TimeSelect", v.TimeSelect},
                     {"TimeStart", v.TimeStart},
                     {"TimeStop", v.TimeStop}},
                    kUser) &&
         ok;
    return finish_save(ctx, ok);
}

bool fkt_saveoption_prgsettings(Program& ctx, const Options& v) {
    return finish_save(ctx, write_keys(ctx, {{"language", v.language}}, kFile));
}

}  // namespace qumbrel
