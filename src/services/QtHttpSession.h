#pragma once

#include "async/Scheduler.h"
#include "services/HttpSession.h"

#include <memory>

class QNetworkAccessManager;

namespace keldra {

/// HTTP through Qt Network. It touches the network only while requests are under way, keeps no cookies, sends no
/// credentials and tells a server nothing that its request does not say.
class QtHttpSession final : public HttpSession {
public:
    explicit QtHttpSession(Scheduler& scheduler);
    /// Requests under way end without an answer.
    ~QtHttpSession() override;

    void send(HttpRequest request, Completion<HttpResponse> done) override;

private:
    Scheduler& m_scheduler;
    /// Made for the first request.
    std::unique_ptr<QNetworkAccessManager> m_network;
};

} // namespace keldra
