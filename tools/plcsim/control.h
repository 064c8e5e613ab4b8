#pragma once
// Commands of the standalone controller's control channel, one per line, so that a test running
// the console against it can spoil the line or change the plant while it runs.
#include "plcsim/controller.h"

#include <QString>
#include <optional>

namespace plcsim {

std::optional<Fault> faultFromName(const QString& name);
std::optional<Outcome> outcomeFromName(const QString& name);

struct ControlAnswer {
    QString text;  // "ok", "ok <value>" or "error: <why>"
    bool quit = false;
};
ControlAnswer runControlCommand(Controller& controller, const QString& line);

// The commands, for --help.
QString controlCommandHelp();
// What the controller answers and what it does not model, for --help.
QString protocolHelp();

}  // namespace plcsim
