#pragma once
// The program context: what the Windows design keeps in module variables lives here, one
// object per program run, passed by reference. Tests make as many as they like.
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "frame/clock.h"
#include "frame/errors.h"
#include "frame/fileio.h"
#include "frame/flag.h"
#include "frame/host.h"
#include "frame/options.h"
#include "frame/regional.h"

namespace qumbrel {

// Event log entries (syslog on Linux). Type 1 success, 2 information, 3 warning, 4 error.
class EventLogBackend {
  public:
    virtual ~EventLogBackend() = default;
    virtual void report(std::string_view source, int type, std::uint32_t eventId,
                        std::string_view text) = 0;
};

// Set by Main from the command line; read everywhere.
struct RunFlags {
    Flag bStartsFromService = kFalse;
    Flag bDebug = kFalse;
    Flag bFda = kFalse;
    Flag bConfiguration = kFalse;
    Flag bNoSplash = kFalse;
    Flag bHasCommandTokens = kFalse;
    std::string strSourceFile;
    bool optionFileWritable = true;  // false for an option file that was empty or unreadable
    std::string strTargetName;
    std::string strSubfolder;
    std::string strOptionFile;
    std::string strRegisterFile;
    std::string strListSeparator;
    std::string strDecimalSymbol;
    std::string strThousandSeparator;
    std::string strDateSeparator;
    std::string strTimeSeparator;
    std::vector<std::string> vCommandTokens;
    bool quiet = false;  // --quiet: the headless status list is not up
};

struct ProgramInfo {
    std::filesystem::path folder;  // program folder: option file, logs, register, languages
    std::string baseName = "qumbrel";
    int major = 1, minor = 0, revision = 0;

    std::string version_text() const;  // "Version: 1.0.0"
    std::string program_name() const;  // "qumbrel 1.0.0"
};

class Program {
  public:
    Program(ProgramInfo info, Host& host, Clock& clock, EventLogBackend& eventLog,
            clsRegionalSettings regional);
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    ProgramInfo info;
    Host& host;
    Clock& clock;
    EventLogBackend& eventLog;
    clsRegionalSettings regional;

    RunFlags run;
    Options opt;
    ErrState err;  // the current error, as fkt_errorreport reads it
    // Every file operation of reports and disposal; tests put in one that fails.
    std::shared_ptr<FileIo> files = posix_file_io();

    // Path of a file in the program folder.
    std::string program_file(std::string_view name) const;

    // State of a higher layer that lives for the whole run (file elements of the previous
    // file, the generators' plain-time state, the value sink's field array, ...). Created
    // on first use; each layer owns its own type. The value sink asks for its state once
    // per value, so the lookup scans a handful of constant keys instead of hashing a type.
    template <class T>
    T& state() {
        const void* const key = &state_key<T>;
        for (const auto& [k, p] : states_)
            if (k == key) return *static_cast<T*>(p.get());
        auto owned = std::make_shared<T>();
        T& ref = *owned;
        states_.emplace_back(key, std::move(owned));
        return ref;
    }

  private:
    template <class T>
    static constexpr char state_key = 0;  // its address names the state type
    std::vector<std::pair<const void*, std::shared_ptr<void>>> states_;
};

}  // namespace qumbrel
