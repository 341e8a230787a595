#pragma once
// The alert window: a text on a coloured ground that closes itself after its seconds
// (stays until clicked when they are 0).
#include <QLabel>

#include "frame/host.h"

namespace qumbrel {

class AlertWindow final : public QLabel {
    Q_OBJECT
  public:
    explicit AlertWindow(const AlertRequest& alert, QWidget* parent = nullptr);
    // An alert window is on the screen.
    static bool any_open();

  protected:
    void mousePressEvent(QMouseEvent* event) override;
};

}  // namespace qumbrel
