#pragma once
// One console per application folder: a second start finds the lock of the first and ends.
#include <QString>

bool AnotherInstanceRunning();
QString InstanceLockPath();  // one lock file per application folder
void ReleaseInstanceLock();  // seam for tests
