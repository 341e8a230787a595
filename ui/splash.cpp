#include "ui/splash.h"

#include <QImageReader>
#include <QLabel>
#include <QTimer>
#include <QVBoxLayout>

namespace qumbrel {

Splash::Splash(Program& ctx, int ms, QWidget* parent)
    : QDialog(parent, Qt::SplashScreen | Qt::FramelessWindowHint) {
    setObjectName("frm_Splash");
    setModal(true);
    auto* view = new QLabel(this);
    view->setObjectName("img_splash");
    QImageReader reader(QString::fromStdString(ctx.program_file("splash.t")));
    reader.setDecideFormatFromContent(true);
    // A picture of sensible size only: the file is the user's and may be anything.
    if (reader.canRead() && reader.size().width() <= 4096 && reader.size().height() <= 4096) {
        const QImage image = reader.read();
        picture_ = !image.isNull();
        if (picture_) view->setPixmap(QPixmap::fromImage(image));
    }
    if (!picture_) {
        view->setText(QString::fromStdString(ctx.info.program_name()));
        view->setAlignment(Qt::AlignCenter);
        view->setMinimumSize(360, 160);
        QFont f = view->font();
        f.setPointSize(f.pointSize() * 2);
        view->setFont(f);
    }
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(view);
    QTimer::singleShot(ms, this, &QDialog::accept);
}

}  // namespace qumbrel
