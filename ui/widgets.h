#pragma once
// Controls made with their object name, the name the language files and tests know them by.
#include <QLabel>
#include <QPushButton>

namespace qumbrel {

inline QLabel* named_label(const QString& name, const QString& text, QWidget* parent) {
    auto* l = new QLabel(text, parent);
    l->setObjectName(name);
    return l;
}

inline QPushButton* named_button(const QString& name, const QString& text, QWidget* parent) {
    auto* b = new QPushButton(text, parent);
    b->setObjectName(name);
    return b;
}

}  // namespace qumbrel
