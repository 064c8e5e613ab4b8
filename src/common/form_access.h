#pragma once
// Forms exist once, are created on first use and destroyed on unload. The link reaches a form only
// by its name and only while it is loaded, so a reply for a form that is gone does no harm.
#include <QColor>
#include <QString>
#include <functional>

class QWidget;

namespace Forms {
using Factory = std::function<QWidget*()>;
void registerForm(const QString& name, Factory factory);
QWidget* loaded(const QString& name);  // nullptr when not loaded
QWidget* load(const QString& name);    // creates it on first use
void show(const QString& name);        // load, then show and raise
void hide(const QString& name);
// Destroys it: a new load starts fresh. Inside a yield it is hidden and forgotten at once, and destroyed
// when the routine that yielded has returned.
void unload(const QString& name);
void unloadAll();
template <class T> T* get(const QString& name) { return static_cast<T*>(load(name)); }
}  // namespace Forms

// Writes a reply into a form's continuation slot (a hidden line edit); its change handler carries on.
void SetSlot(const QString& form, const QString& slot, const QString& text);
// Sets a status caption in the given colour and shows it.
void ShowCaption(const QString& form, const QString& label, const QString& text, QColor color);
void HideControl(const QString& form, const QString& control);
void ShowControl(const QString& form, const QString& control);  // as it stands: text and colour kept
// The text of a form's box or label; empty when the form or the control is missing.
QString ControlText(const QString& form, const QString& control);
void SetControlText(const QString& form, const QString& control, const QString& text);

// The control name of member i of an indexed set of controls: "TxtDCansd(3)".
QString IndexedName(const char* base, int i);

inline const QColor kGreen(0, 0x80, 0);
inline const QColor kRed(0xFF, 0, 0);
