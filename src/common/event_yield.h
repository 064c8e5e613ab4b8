#pragma once
// The one way the console yields to the event loop in the middle of its own work (the checksum and the
// block loops). A click or a reply handled inside the yield may unload the very form whose routine is
// yielding; the depth kept here lets Forms::unload hide such a form at once and destroy it only when no
// yield is open any more and the routine has returned.
class QWidget;

void YieldToEvents();
int YieldDepth();  // yields open on the stack: 0 in the plain event loop
// Run when the outermost yield has returned. The forms' deferred destruction sets it; a program without
// forms yields all the same.
void SetAfterOutermostYield(void (*routine)());

// Destroys the form once no yield is open and control is back in the event loop.
void DestroyWhenSettled(QWidget* form);
// Destroys at once what is waiting, when no yield is open (the end of the program).
void DestroySettledNow();
