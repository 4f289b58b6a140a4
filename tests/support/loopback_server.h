// A product service in the test's own process: plain HTTP on the address of the tests' product family.
#pragma once

#include <winsock2.h>

#include <atomic>
#include <chrono>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// What the service does with a request.
struct Reply
{
    /// The bytes that go out, head and all; each piece in a send of its own.
    std::vector<std::string> pieces;
    std::chrono::milliseconds pauseBetweenPieces{0};
    /// Ends the connection with a reset instead of an orderly close.
    bool resets = false;
    /// Ends the connection before the request has been read.
    bool ignoresRequest = false;

    /// A complete reply with a body of the given length.
    static Reply Http(const std::string& body, const std::string& statusLine = "200 OK");
    static Reply Nothing() { return {}; }
};

class LoopbackServer
{
public:
    LoopbackServer();
    ~LoopbackServer();

    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    /// Refuses connections from now on.
    void Stop();

    /// Sets the reply for a path from now on; the probe is answered with "1" until told otherwise.
    void Answer(const std::string& path, Reply reply);
    void AnswerUpdates(Reply reply) { Answer("/get_updates.php", std::move(reply)); }

    /// Keeps no requests from now on, so that the list does not grow.
    void ForgetsRequests() { m_keepsRequests = false; }

    /// The requests so far, each as "PATH BODY", and the last one as it came.
    std::vector<std::string> Requests() const;
    std::string LastRequest() const;

private:
    void Run();
    void Serve(SOCKET connection);

    mutable std::mutex m_mutex;
    std::map<std::string, Reply> m_replies;
    std::vector<std::string> m_requests;
    std::string m_lastRequest;
    std::atomic<bool> m_keepsRequests = true;
    SOCKET m_listener = INVALID_SOCKET;
    std::atomic<bool> m_isStopping = false;
    std::thread m_thread;
};
