#include "shell/key_filter.h"

#include <QLineEdit>
#include <QValidator>

namespace {

// A validator sees every edit an operator makes, typed or pasted, and none that the program makes with
// setText, so values read from the controller are shown as they are whatever the list.
class KeyRuleValidator : public QValidator {
public:
    KeyRuleValidator(QLineEdit* box, std::function<KeyRule()> rule)
        : QValidator(box), box_(box), shown_(box->text()), rule_(std::move(rule))
    {
        // The box holds the edited text already when it asks; what it showed before is kept here.
        connect(box, &QLineEdit::textChanged, this, [this](const QString& t) { shown_ = t; });
    }

    State validate(QString& input, int&) const override
    {
        // setText clears the box's undo history, an operator's edit adds to it. A text the program
        // sets must not be judged: a refusal would leave the box believing its text bad, and it then
        // lets the next typed key through unjudged.
        if (!box_->isUndoAvailable())
            return Acceptable;
        const QString inserted = InsertedText(shown_, input);
        if (inserted.isEmpty())
            return Acceptable;
        const KeyRule r = rule_();
        for (const QChar c : inserted) {
            if (!r.allowed.contains(c))
                return Invalid;
        }
        if (r.singlePoint) {
            const QChar point = QLatin1Char('.');
            // A typed point is swallowed while the box holds one, even one the key would type over.
            if (inserted == point && shown_.contains(point))
                return Invalid;
            if (inserted.contains(point) && input.count(point) > 1)
                return Invalid;
        }
        return Acceptable;
    }

private:
    QLineEdit* box_;
    QString shown_;
    std::function<KeyRule()> rule_;
};

}  // namespace

QString InsertedText(const QString& before, const QString& after)
{
    qsizetype prefix = 0;
    const qsizetype shorter = std::min(before.size(), after.size());
    while (prefix < shorter && before.at(prefix) == after.at(prefix))
        ++prefix;
    qsizetype suffix = 0;
    while (suffix < shorter - prefix && before.at(before.size() - 1 - suffix) == after.at(after.size() - 1 - suffix))
        ++suffix;
    return after.mid(prefix, after.size() - prefix - suffix);
}

void RestrictKeys(QLineEdit* box, std::function<KeyRule()> rule)
{
    box->setValidator(new KeyRuleValidator(box, std::move(rule)));
}

void RestrictKeys(QLineEdit* box, const QString& allowed, bool singlePoint)
{
    RestrictKeys(box, [allowed, singlePoint] { return KeyRule{allowed, singlePoint}; });
}
