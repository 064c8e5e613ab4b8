#include "common/module1.h"

#include <QCoreApplication>
#include <cstdlib>

void EndProcessNow(int code)
{
    if (EndProcess) {
        EndProcess(code);
        return;
    }
    std::_Exit(code);
}

void EndProgram()
{
    if (EndProgramHook) {
        EndProgramHook();
        return;
    }
    QCoreApplication::exit(0);  // every event loop, a modal box's too, without asking the windows again
}
