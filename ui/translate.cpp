#include "ui/translate.h"

#include <QAbstractButton>
#include <QAction>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QRegularExpression>

#include "frame/language.h"

namespace qumbrel {
namespace {

// A caption's holder, with its name split into name and index.
struct Item {
    QObject* object;
    TranslatableControl control;
};

std::optional<std::string> caption_of(QObject* o) {
    if (auto* b = qobject_cast<QAbstractButton*>(o)) return b->text().toStdString();
    if (auto* l = qobject_cast<QLabel*>(o)) return l->text().toStdString();
    if (auto* g = qobject_cast<QGroupBox*>(o)) return g->title().toStdString();
    if (auto* a = qobject_cast<QAction*>(o)) return a->text().toStdString();
    return std::nullopt;
}

void set_caption(QObject* o, const std::string& text) {
    const QString t = QString::fromStdString(text);
    if (auto* b = qobject_cast<QAbstractButton*>(o)) b->setText(t);
    if (auto* l = qobject_cast<QLabel*>(o)) l->setText(t);
    if (auto* g = qobject_cast<QGroupBox*>(o)) g->setTitle(t);
    if (auto* a = qobject_cast<QAction*>(o)) a->setText(t);
}

}  // namespace

void translate_widget(Program& ctx, QWidget* window) {
    static const QRegularExpression indexed(R"(^(\w+)\((\d+)\)$)");
    std::vector<QObject*> objects;
    for (QObject* o : window->findChildren<QObject*>()) objects.push_back(o);
    TranslatableForm form{
        window->objectName().toStdString(), window->windowTitle().toStdString(), {}};
    std::vector<QObject*> owners;
    // The controls of this form: not Qt's own, not those of a form inside it (a page).
    const auto own = [window](QObject* o) {
        for (QObject* p = o->parent(); p && p != window; p = p->parent())
            if (p->objectName().startsWith("frm_")) return false;
        return true;
    };
    for (QObject* o : objects) {
        const QString name = o->objectName();
        if (name.isEmpty() || name.startsWith("qt_") || !own(o)) continue;
        const auto caption = caption_of(o);
        auto* w = qobject_cast<QWidget*>(o);
        if (!caption && !w) continue;
        TranslatableControl c;
        const auto m = indexed.match(name);
        c.name = (m.hasMatch() ? m.captured(1) : name).toStdString();
        if (m.hasMatch()) c.index = m.captured(2).toInt();
        c.caption = caption;
        if (w) c.toolTip = w->toolTip().toStdString();
        form.controls.push_back(c);
        owners.push_back(o);
    }
    sub_translateform(ctx, form, ctx.opt.language);
    // The items of a list box by "<name>.List(<index>)", a key the form walk does not know.
    const std::string file = resolve_language_path(ctx, ctx.opt.language);
    for (QComboBox* box : window->findChildren<QComboBox*>()) {
        if (box->objectName().isEmpty() || !own(box)) continue;
        const std::string name = box->objectName().toStdString();
        for (int i = 0; i < box->count(); ++i) {
            const std::string key = name + ".List(" + std::to_string(i) + ")";
            box->setItemText(i, QString::fromStdString(fkt_readlanguage(
                                    file, form.name, key, box->itemText(i).toStdString())));
        }
    }
    window->setWindowTitle(QString::fromStdString(form.caption));
    for (std::size_t k = 0; k < owners.size(); ++k) {
        const TranslatableControl& c = form.controls[k];
        if (c.caption) set_caption(owners[k], *c.caption);
        if (c.toolTip)
            if (auto* w = qobject_cast<QWidget*>(owners[k]))
                w->setToolTip(QString::fromStdString(*c.toolTip));
    }
}

}  // namespace qumbrel
