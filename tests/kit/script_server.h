#ifndef ATTALVEN_TESTS_KIT_SCRIPT_SERVER_H
#define ATTALVEN_TESTS_KIT_SCRIPT_SERVER_H

// A server on a loopback port that plays one dialogue from a script and records what it got.

#include <string>
#include <thread>
#include <vector>

namespace kit {

class ScriptServer {
  public:
    /// One reply a line received, the first on connecting; "" closes the connection, "-" gives no
    /// reply. After a reply of 354 lines are taken up to one that is ".". Behind the last reply the
    /// server answers 250.
    explicit ScriptServer(std::vector<std::string> replies);
    ~ScriptServer();
    /// "127.0.0.1:port".
    std::string address() const { return "127.0.0.1:" + std::to_string(port_); }
    int port() const { return port_; }
    /// All that was received, once the client has hung up.
    const std::string& received();

  private:
    void play(std::vector<std::string> replies);

    int listener_ = -1, port_ = 0;
    std::string received_;
    std::thread thread_;
};

}  // namespace kit

#endif
