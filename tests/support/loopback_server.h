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
    bool resets = false;         ///< Ends the connection with a reset instead of an orderly close.
    bool ignoresRequest = false; ///< Ends the connection before the request has been read.

    /// A complete reply with a body of the given length.
    static Reply Http(const std::string& body, const std::string& statusLine = "200 OK");
};

class LoopbackServer
{
public:
    LoopbackServer();
    ~LoopbackServer();

    /// Refuses connections from now on.
    void Stop();

    /// Sets the reply for a path from now on; the probe is answered with "1" until told otherwise.
    void Answer(const std::string& path, Reply reply);
    void AnswerUpdates(Reply reply) { Answer("/get_updates.php", std::move(reply)); }

    /// The requests since the last call, whole.
    std::vector<std::string> TakeRequests();

private:
    void Run();
    void Serve(SOCKET connection);

    std::mutex m_mutex;
    std::map<std::string, Reply> m_replies;
    std::vector<std::string> m_requests;
    SOCKET m_listener = INVALID_SOCKET;
    std::atomic<bool> m_isStopping = false;
    std::thread m_thread;
};
