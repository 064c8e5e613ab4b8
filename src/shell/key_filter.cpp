#include "shell/key_filter.h"

#include <QLineEdit>
#include <QValidator>

namespace {

// A validator sees every edit an operator makes, typed or pasted, and none that the program makes with
// setText, so values read from the controller are shown as they are whatever the list.
class KeyRuleValidator : public QValidator {
public:
    KeyRuleValidator(QLineEdit* box, std::function<KeyRule()> rule)
        : QValidator(box), shown_(box->text()), rule_(std::move(rule))
    {
        // The box holds the edited text already when it asks; what it showed before is kept here.
        connect(box, &QLineEdit::textChanged, this, [this](const QString& t) { shown_ = t; });
    }

    State validate(QString& input, int&) const override
    {
        const QString inserted = InsertedText(shown_, input);
        if (inserted.isEmpty())
            return Acceptable;
        const KeyRule r = rule_();
        for (const QChar c : inserted) {
            if (!r.allowed.contains(c))
                return Invalid;
        }
        if (r.singlePoint && inserted.contains(QLatin1Char('.')) && input.count(QLatin1Char('.')) > 1)
            return Invalid;
        return Acceptable;
    }

private:
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
