#pragma once
// cls_EventLogger: entries in the system's event log under the program's base name.
// Types 1 success, 2 information, 3 warning, 4 error; other types write nothing.
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "frame/context.h"

namespace qumbrel {

class cls_EventLogger {
  public:
    explicit cls_EventLogger(Program& ctx) : ctx_(ctx) {}

    static constexpr std::uint32_t event_id(int type) {
        switch (type) {
            case 1:
                return 0;
            case 2:
                return 0x40000001u;
            case 3:
                return 0x80000002u;
            case 4:
                return 0xC0000003u;
            default:
                return 0;
        }
    }

    bool WriteLog(std::string_view text, int type);
    // The strings are joined with line breaks into one entry; `count` of them are used.
    bool WriteLogEx(const std::vector<std::string>& strings, std::size_t count, int type);

  private:
    Program& ctx_;
};

}  // namespace qumbrel
