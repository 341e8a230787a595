#include "ui/picture.h"

#include <QImageReader>

namespace qumbrel {

std::optional<QPixmap> read_picture(const std::string& path) {
    QImageReader reader(QString::fromStdString(path));
    reader.setDecideFormatFromContent(true);
    if (!reader.canRead() || reader.size().width() > 4096 || reader.size().height() > 4096)
        return std::nullopt;
    const QImage image = reader.read();
    if (image.isNull()) return std::nullopt;
    return QPixmap::fromImage(image);
}

}  // namespace qumbrel
