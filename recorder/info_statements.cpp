#include "recorder/info_statements.h"

#include "frame/errors.h"
#include "frame/log.h"

namespace qumbrel {

namespace {

constexpr std::int32_t kBadCallingConvention = 49;

}  // namespace

void run_info_statements(Program& ctx, std::string_view name,
                         std::span<const std::function<void()>> statements) {
    int step = 0;
    for (const auto& statement : statements) {
        ++step;
        try {
            statement();
        } catch (const VbError& e) {
            if (e.number() == kBadCallingConvention) continue;
            report_trapped(ctx, name, step);
            return;
        } catch (...) {
            report_trapped(ctx, name, step);
            return;
        }
    }
}

}  // namespace qumbrel
