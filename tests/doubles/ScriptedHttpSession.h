#pragma once

#include "services/HttpSession.h"

#include <deque>
#include <utility>
#include <vector>

namespace keldra {

/// Web servers that answer as the test says: at once (in a later turn of `main`) or, while holding, when told.
class ScriptedHttpSession final : public HttpSession {
public:
    explicit ScriptedHttpSession(Executor& main) : m_main(main) {}

    void send(HttpRequest request, Completion<HttpResponse> done) override {
        requests.push_back(std::move(request));
        m_waiting.push_back(std::move(done));
        if (!holds)
            answerFirst(answer(requests.back()));
    }

    /// Answers the request that has waited longest.
    void answerFirst(Result<HttpResponse> response) {
        auto done = std::move(m_waiting.front());
        m_waiting.pop_front();
        m_main.post([done = std::move(done), response = std::move(response)] { done(response); });
    }

    std::function<Result<HttpResponse>(const HttpRequest&)> answer = [](const HttpRequest&) {
        return HttpResponse{200, {}, {}};
    };
    bool holds = false;
    std::vector<HttpRequest> requests;

private:
    Executor& m_main;
    std::deque<Completion<HttpResponse>> m_waiting;
};

} // namespace keldra
