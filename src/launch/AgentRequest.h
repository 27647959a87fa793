#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>

namespace keldra {

/// What the desktop agent is started for, beside being there.
struct AgentRequest {
    /// A movie to be edited; empty for none.
    QUrl file;
    /// The user picks a movie to be edited.
    bool opensPicker = false;
    friend bool operator==(const AgentRequest&, const AgentRequest&) = default;
};

/// What these words (without the program's name) ask of the agent: nothing, "--open", or a file that is there, as a
/// path seen from `folder` or as a URL. No answer for all others: they are for the command line.
std::optional<AgentRequest> readAgentRequest(const QStringList& words, const QString& folder);

} // namespace keldra
