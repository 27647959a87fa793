#include "platform/pipewire/PipeWireCaptureDevices.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace keldra {
namespace {

using namespace std::chrono_literals;

/// A daemon that is there answers within a few hundredths.
constexpr std::chrono::nanoseconds firstAnswer = 1s;

bool isMicrophone(const PipeWireNode& node) {
    return node.mediaClass == "Audio/Source" || node.mediaClass == "Audio/Source/Virtual" ||
           node.mediaClass == "Audio/Duplex";
}

/// Screens that are shared may come as video sources too.
bool isCamera(const PipeWireNode& node) {
    return node.mediaClass == "Video/Source" && (node.mediaRole.empty() || node.mediaRole == "Camera");
}

} // namespace

PipeWireCaptureDevices::PipeWireCaptureDevices(Executor& mainQueue) : m_mainQueue(mainQueue) {
    PipeWireConnection::Events events;
    events.connected = [this](pw_core&, pw_loop&) { setReachable(true); };
    events.lost = [this] { setReachable(false); };
    events.appeared = [this](const PipeWireNode& node) { appeared(node); };
    events.vanished = [this](std::uint32_t node) { vanished(node); };
    events.chosen = [this](const std::string& key, const std::string& value) { setChoice(key, value); };
    events.listed = [this] { answered(); };
    events.unreachable = [this] { answered(); };
    m_connection = std::make_unique<PipeWireConnection>(std::move(events));
    std::unique_lock guard(m_lock);
    m_whenAnswered.wait_for(guard, firstAnswer, [this] { return m_isAnswered; });
}

PipeWireCaptureDevices::~PipeWireCaptureDevices() = default;

CaptureAuthorization PipeWireCaptureDevices::authorization(CaptureDeviceKind) const {
    const std::lock_guard guard(m_lock);
    return m_isReachable ? CaptureAuthorization::authorized : CaptureAuthorization::denied;
}

void PipeWireCaptureDevices::requestAccess(CaptureDeviceKind kind, Completion<bool> done) {
    const bool isGranted = authorization(kind) == CaptureAuthorization::authorized;
    m_mainQueue.post([isGranted, done = std::move(done)] { done(isGranted); });
}

QList<CaptureDeviceOption> PipeWireCaptureDevices::devices(CaptureDeviceKind kind) const {
    const std::lock_guard guard(m_lock);
    QList<CaptureDeviceOption> options;
    for (const auto& [id, node] : kind == CaptureDeviceKind::camera ? m_cameras : m_microphones)
        options.append({QString::fromStdString(node.name),
                        QString::fromStdString(node.description.empty() ? node.name : node.description)});
    return options;
}

QString PipeWireCaptureDevices::defaultDeviceID(CaptureDeviceKind kind) const {
    const std::lock_guard guard(m_lock);
    if (kind == CaptureDeviceKind::microphone) {
        // The desktop may also name an output there, whose sound is no microphone's.
        const bool isThere = std::any_of(m_microphones.begin(), m_microphones.end(), [this](const auto& each) {
            return QString::fromStdString(each.second.name) == m_chosenMicrophone;
        });
        return isThere ? m_chosenMicrophone : QString();
    }
    const auto best = std::max_element(m_cameras.begin(), m_cameras.end(), [](const auto& a, const auto& b) {
        return a.second.sessionPriority < b.second.sessionPriority;
    });
    return best == m_cameras.end() ? QString() : QString::fromStdString(best->second.name);
}

void PipeWireCaptureDevices::appeared(const PipeWireNode& node) {
    if (!isCamera(node) && !isMicrophone(node))
        return;
    {
        const std::lock_guard guard(m_lock);
        (isCamera(node) ? m_cameras : m_microphones)[node.id] = node;
    }
    changed();
}

void PipeWireCaptureDevices::vanished(std::uint32_t node) {
    bool isOurs = false;
    {
        const std::lock_guard guard(m_lock);
        isOurs = m_cameras.erase(node) + m_microphones.erase(node) > 0;
    }
    if (isOurs)
        changed();
}

void PipeWireCaptureDevices::setChoice(const std::string& key, const std::string& value) {
    if (key != "default.audio.source")
        return;
    const QJsonObject choice = QJsonDocument::fromJson(QByteArray::fromStdString(value)).object();
    {
        const std::lock_guard guard(m_lock);
        m_chosenMicrophone = choice["name"].toString();
    }
    changed();
}

void PipeWireCaptureDevices::setReachable(bool isReachable) {
    {
        const std::lock_guard guard(m_lock);
        m_isReachable = isReachable;
        m_cameras.clear();
        m_microphones.clear();
        m_chosenMicrophone.clear();
    }
    changed();
}

void PipeWireCaptureDevices::answered() {
    const std::lock_guard guard(m_lock);
    m_isAnswered = true;
    m_whenAnswered.notify_all();
}

/// What was there from the start is no change; several at once are told once.
void PipeWireCaptureDevices::changed() {
    {
        const std::lock_guard guard(m_lock);
        if (!m_isAnswered || m_isChangeOnItsWay)
            return;
        m_isChangeOnItsWay = true;
    }
    m_mainQueue.post([this, alive = std::weak_ptr<bool>(m_isAlive)] {
        if (alive.expired())
            return;
        {
            const std::lock_guard guard(m_lock);
            m_isChangeOnItsWay = false;
        }
        notifyChanged();
    });
}

} // namespace keldra
