#include "frame/headless_host.h"

#include <string>

namespace qumbrel {

namespace {
void put_line(std::FILE* f, std::string_view prefix, std::string_view text) {
    std::string out(prefix);
    out.reserve(prefix.size() + text.size() + 1);
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r') {
            out += '\n';
            if (i + 1 < text.size() && text[i + 1] == '\n') ++i;
        } else {
            out += text[i];
        }
    }
    out += '\n';
    std::fwrite(out.data(), 1, out.size(), f);
    std::fflush(f);
}
}  // namespace

void HeadlessHost::add_status_line(std::string_view text) {
    ++lines_;
    put_line(out_, "", text);
}

void HeadlessHost::show_alert(const AlertRequest& alert) {
    put_line(err_, "qumbrel: ", alert.text);
}

void HeadlessHost::message_box(std::string_view text, MessageIcon icon) {
    put_line(err_, icon == MessageIcon::Critical ? "qumbrel: error: " : "qumbrel: ", text);
}

}  // namespace qumbrel
