#include "common/form_access.h"

#include "common/event_yield.h"

#include <QHash>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QWidget>

namespace {
QHash<QString, Forms::Factory>& factories()
{
    static QHash<QString, Forms::Factory> f;
    return f;
}
QHash<QString, QPointer<QWidget>>& instances()
{
    static QHash<QString, QPointer<QWidget>> i;
    return i;
}
}  // namespace

namespace Forms {
void registerForm(const QString& name, Factory factory) { factories().insert(name, std::move(factory)); }

QWidget* loaded(const QString& name)
{
    auto it = instances().find(name);
    if (it == instances().end())
        return nullptr;
    return it->data();
}

QWidget* load(const QString& name)
{
    if (QWidget* w = loaded(name))
        return w;
    auto f = factories().find(name);
    if (f == factories().end())
        return nullptr;
    QWidget* w = (*f)();
    if (w) {
        w->setObjectName(name);
        instances().insert(name, w);
    }
    return w;
}

void show(const QString& name)
{
    if (QWidget* w = load(name)) {
        w->show();
        w->raise();
        w->activateWindow();
    }
}

void hide(const QString& name)
{
    if (QWidget* w = loaded(name))
        w->hide();
}

void unload(const QString& name)
{
    QPointer<QWidget> w = instances().take(name);
    if (!w)
        return;
    w->hide();
    // Inside a yield one of the form's own routines may still be running below us.
    if (YieldDepth() > 0)
        DestroyWhenSettled(w.data());
    else
        delete w.data();
}

void unloadAll()
{
    const auto names = instances().keys();
    for (const QString& n : names)
        unload(n);
    DestroySettledNow();
}
}  // namespace Forms

static QWidget* child(const QString& form, const QString& control)
{
    QWidget* f = Forms::loaded(form);
    if (!f)
        return nullptr;
    if (f->objectName() == control)
        return f;
    return f->findChild<QWidget*>(control);
}

void SetSlot(const QString& form, const QString& slot, const QString& text)
{
    if (auto* e = qobject_cast<QLineEdit*>(child(form, slot)))
        e->setText(text);
}

void ShowCaption(const QString& form, const QString& label, const QString& text, QColor color)
{
    if (auto* l = qobject_cast<QLabel*>(child(form, label))) {
        l->setText(text);
        QPalette p = l->palette();
        p.setColor(QPalette::WindowText, color);
        l->setPalette(p);
        l->setVisible(true);
    }
}

void HideControl(const QString& form, const QString& control)
{
    if (QWidget* w = child(form, control))
        w->setVisible(false);
}

void ShowControl(const QString& form, const QString& control)
{
    if (QWidget* w = child(form, control))
        w->setVisible(true);
}

QString ControlText(const QString& form, const QString& control)
{
    QWidget* w = child(form, control);
    if (auto* e = qobject_cast<QLineEdit*>(w))
        return e->text();
    if (auto* l = qobject_cast<QLabel*>(w))
        return l->text();
    return QString();
}

void SetControlText(const QString& form, const QString& control, const QString& text)
{
    QWidget* w = child(form, control);
    if (auto* e = qobject_cast<QLineEdit*>(w))
        e->setText(text);
    else if (auto* l = qobject_cast<QLabel*>(w))
        l->setText(text);
}

QString IndexedName(const char* base, int i) { return QStringLiteral("%1(%2)").arg(QLatin1String(base)).arg(i); }
