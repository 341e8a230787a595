#include "ui/text_filters.h"

#include <QSignalBlocker>

#include "frame/log.h"
#include "frame/vbformat.h"

namespace qumbrel {

bool is_not_digit(QChar c) {
    return c < QChar('0') || c > QChar('9');
}

bool is_name_forbidden(QChar c) {
    return QStringLiteral("/\\?<>*:|\"").contains(c);
}

void filter_at_cursor(QLineEdit* box, const std::function<bool(QChar)>& bad, bool atLeastOne) {
    QString text = box->text();
    int cursor = box->cursorPosition();
    if (!text.isEmpty() && cursor > 0 && bad(text[cursor - 1])) {
        text.remove(cursor - 1, 1);
        --cursor;
    }
    if (atLeastOne && vb::Val(text.toStdString()) < 1) text = "1";
    if (text == box->text()) return;
    const QSignalBlocker quiet(box);  // the change handlers ran for this change already
    box->setText(text);
    box->setCursorPosition(std::min(cursor, static_cast<int>(text.size())));
}

void guarded(Program& ctx, const QString& handler, const std::function<void()>& fn) {
    try {
        fn();
    } catch (...) {
        report_trapped(ctx, handler.toStdString(), 0);
    }
}

}  // namespace qumbrel
