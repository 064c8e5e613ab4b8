#pragma once
// StepNo is the protocol's state: it says which request is in flight, what its reply means, whom it
// goes to and what is sent next. The whole conversation with the controller is one table.
#include <QString>

enum class ReplyKind { Read, Write };

struct StepRow {
    short step;
    ReplyKind kind;
    void (*good)(const QString& payload);  // payload: the data digits of a read, empty for a write
    void (*bad)();                          // nullptr: a read retries; a write has nothing more to do
};

// The row of a step, or nullptr for the default row (444 and every unknown step).
const StepRow* FindStep(short step);
// Routes a reply by StepNo. Unknown steps stop Timer2 and drop the reply.
void DispatchReply(const QString& reply);
