#include "ui/splash.h"

#include "ui/picture.h"

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
    if (const auto picture = read_picture(ctx.program_file("splash.t"))) {
        view->setPixmap(*picture);
        picture_ = true;
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
