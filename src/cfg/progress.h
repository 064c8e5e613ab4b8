#pragma once
// A progress bar on standard error, drawn only when standard error is a terminal: the transfers take
// seconds at 9600 baud, and a pipe or a log wants none of it.
#include <QString>

class TerminalProgress {
public:
    TerminalProgress();
    ~TerminalProgress();
    void show(const QString& what, int done, int total);

private:
    bool drawn_ = false;
    bool enabled_ = false;
};
