#pragma once
// What every console test needs: its own application folder, the simulator on the port, fresh globals,
// and an operator who answers the own message box.
#include "common/form_access.h"
#include "common/module1.h"
#include "link/link_engine.h"
#include "plcsim/controller.h"
#include "shell/app_setup.h"

#include <QObject>
#include <QStringList>
#include <QTest>
#include <QTemporaryDir>
#include <QTimer>
#include <QWidget>

// While this lives, the file accesses of this thread and of the threads it starts are checked as those of
// another account of the station, with the operators' umask 022, as when another operator saves. Only the
// superuser can lend them (active() is false otherwise).
class FilesAsUser {
public:
    FilesAsUser(unsigned uid, unsigned gid);
    ~FilesAsUser();
    bool active() const { return oldUid_ >= 0; }
    Q_DISABLE_COPY(FilesAsUser)

private:
    int oldUid_ = -1, oldGid_ = -1;
    unsigned oldMask_ = 0;
};

// Brings the shared store back to the state of a fresh start.
void ResetConsoleState();

struct ConsoleHarness {
    QTemporaryDir dir;
    plcsim::Controller sim;
    int endedProcess = -1;  // exit code of an at-once end, -1 if none
    bool programEnded = false;

    ConsoleHarness();
    ~ConsoleHarness();
    QString path(const QString& relative) const;  // inside the application folder
    // Opens the port to the simulator as a good login does, without the form.
    void connectLink();
    // The frames the console sent since the last call, as text.
    QStringList takeFrames();
};

// The scale's devices, number and title, as the menu sets them before it opens the scale's forms.
void UseScaleDevices(int scale);

// Answers each box as it appears: the queued answers in order (true = OK/Yes, false = No), then OK/Yes.
class MbAnswerer : public QObject {
    Q_OBJECT
public:
    explicit MbAnswerer(QObject* parent = nullptr);
    void queue(bool answer) { answers_.append(answer); }
    QStringList texts;           // LblAsk of each box, in order
    QList<bool> errorIcons;      // MbIsError at the time, for OK boxes
    QList<bool> okOnly;          // MbIsOk at the time

private:
    void poll();
    QList<bool> answers_;
    QTimer timer_;
};

// Frames as the controller sees them, written out by hand so that the console's codec is not used to check
// itself: STX, body, ETX and the low byte of the sum of body and ETX.
QString Frame(const QString& body);
// The write of data (hex digits) at a byte address (four hex digits).
QString WriteFrame(const char* at, const char* data);
// The data digits of a block of words, each low byte first.
QString WordsHex(const QList<int>& words);
// Writes a file of exactly these bytes, its folders made.
bool putBytes(const QString& path, const QByteArray& bytes);
// A file's bytes; empty when it cannot be read.
QByteArray rawBytes(const QString& path);
// Today's error log as text.
QString ErrorLogText();
// The bytes of a text file the stations share: lines ended by CRLF, in their code page.
QByteArray GbLines(const QStringList& lines);

// A child widget of a form by its control name.
template <class T = QWidget> T* Ctl(QWidget* form, const QString& name) { return form->findChild<T*>(name); }
// Text colour of a status caption.
QColor TextColor(QWidget* label);
// Simulated click on a widget (press at its centre).
void ClickOn(QWidget* w);

// Logs in at the main form with the console's access code, as the operator does.
void LogIn();
// Walks through the console as an operator clicks it. A step "Form:control" clicks a control of a showing
// form, "Form:control=text" types into a box, "open:Form" shows a form that no menu opens, "hidden:Form"
// waits until the form has stepped aside, "idle" until the link has no request out. A step that cannot
// be made fails the test.
void Walk(const QStringList& steps);

// Named rows from a plain table of structs that begin with `const char* name`: the row's index is the only
// column, and TableRow gives the test its entry.
template <class T, size_t N> void TableRows(const T (&rows)[N])
{
    QTest::addColumn<int>("row");
    for (size_t i = 0; i < N; ++i)
        QTest::newRow(rows[i].name) << int(i);
}
template <class T, size_t N> const T& TableRow(const T (&rows)[N])
{
    return rows[*static_cast<int*>(QTest::qData("row", QMetaType::Int))];
}
