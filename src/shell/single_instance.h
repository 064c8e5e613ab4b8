#pragma once
// One console per application folder: a second start finds the lock of the first and ends.
bool AnotherInstanceRunning();
void ReleaseInstanceLock();  // seam for tests
