#pragma once
// frm_Splash: shown modal while the main window loads, with the picture "splash.t" of the
// program folder (any image format Qt reads, found by its content) or, without one, the
// program's name and version. It closes by itself after `ms`, or on a click or key.
#include <QDialog>

#include "frame/context.h"

namespace qumbrel {

class Splash final : public QDialog {
    Q_OBJECT
  public:
    explicit Splash(Program& ctx, int ms = 1500, QWidget* parent = nullptr);
    bool has_picture() const { return picture_; }

  protected:
    void mousePressEvent(QMouseEvent*) override { accept(); }
    void keyPressEvent(QKeyEvent*) override { accept(); }

  private:
    bool picture_ = false;
};

}  // namespace qumbrel
