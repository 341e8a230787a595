#pragma once
// A picture of the program folder (splash.t, logo.t): any format Qt reads, found by its
// content, of sensible size only (the file is the user's and may be anything).
#include <QPixmap>
#include <optional>
#include <string>

namespace qumbrel {

std::optional<QPixmap> read_picture(const std::string& path);

}  // namespace qumbrel
