#pragma once
// Text boxes that take only the characters of a list. A typed character outside the list is swallowed;
// keys that type nothing (Delete, Backspace, arrows, Enter) keep their editing role; pasted, dropped or
// middle-clicked text comes in only if every character of it could have been typed.
#include <QString>
#include <functional>

class QLineEdit;

struct KeyRule {
    QString allowed;           // the characters that may be typed
    bool singlePoint = false;  // a "." is swallowed while the box already holds one
};

// The rule may change with the form's state (the box that has the focus, the scale shown): it is asked
// again on every edit.
void RestrictKeys(QLineEdit* box, std::function<KeyRule()> rule);
void RestrictKeys(QLineEdit* box, const QString& allowed, bool singlePoint = false);

// The characters an edit of `before` into `after` brought in; empty for a pure deletion.
QString InsertedText(const QString& before, const QString& after);
