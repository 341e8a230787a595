#pragma once
// The character filters of the option pages: run on every change of a box, they look at
// the character in front of the cursor only, so a pasted text is checked at its end.
#include <QLineEdit>
#include <functional>

#include "frame/context.h"

namespace qumbrel {

bool is_not_digit(QChar c);
// The characters a file name cannot hold on the recorder's side: / \ ? < > * : | and ".
bool is_name_forbidden(QChar c);

// When the text is not empty and the cursor is not at 0, the character in front of the
// cursor is removed if `bad`, and the cursor moves back one. With `atLeastOne` a value
// below 1 (an empty text too) becomes "1".
void filter_at_cursor(QLineEdit* box, const std::function<bool(QChar)>& bad, bool atLeastOne);

// Runs a change handler; an exception goes to the error log under the handler's name and
// the page stays.
void guarded(Program& ctx, const QString& handler, const std::function<void()>& fn);

}  // namespace qumbrel
