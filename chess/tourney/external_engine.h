#pragma once
// Another chess program as a tournament player.
//
// clsExternalEngine runs the program as a child process (clsRedirectedChild)
// and speaks xboard or UCI with it: every command is logged "--->\t" and
// followed by a pause, 100 ms unless the tournament sets another, so a slow
// engine never receives commands faster than it reads them (the pause is
// part of what its moves cost); every line
// read is logged "<---\t" and translated into a reply. What it prints is
// bounded: lines cut at 64 KB, lines beyond 1 MB unread dropped. Stopping never waits
// for the program to agree: "quit", then the process is terminated.
#include <string>

#include "base/child_process.h"
#include "chess/tourney/engine_interface.h"

namespace kbuChess {

class clsExternalEngine : public clsEngineInterface, public kobubase::clsRedirectedChild {
 public:
  static constexpr int COMMAND_PAUSE_MS = 100;
  static constexpr int MAX_COMMAND_PAUSE_MS = 1000;
  // How long Stop and Kill give the program after "quit", each time.
  static constexpr int QUIT_GRACE_MS = 1000;

  clsExternalEngine(const std::string& name, const std::string& program, const std::string& parameters, int protocol,
                    clsGameLog* owner);
  // Quits, terminates the program and closes its pipes.
  ~clsExternalEngine() override;

  using clsEngineInterface::name;
  bool Start() override;
  // "quit"; then, twice in a row (deliberately: about two seconds in all),
  // a second's grace and termination; then the reader thread ends.
  void Stop() override;
  std::string ReadReply() override;
  void Send(const std::string& text) override;
  // Ready and the program still running.
  bool IsAlive() override;
  // The program has ended (or never started) and all it wrote has been read.
  bool HasEnded() override;
  bool HasPendingOutput() override { return hasLine(); }
  // "program not found: PATH (system's error text)" or "cannot start PATH
  // (...)" once the start has failed; "" when it ran.
  std::string StartProblem() override;
  // "quit", a second's grace, termination.
  void Kill();
  // The pause after every command, held within 0..MAX_COMMAND_PAUSE_MS.
  void setCommandPause(int ms);

 private:
  int commandPauseMs_ = COMMAND_PAUSE_MS;
};

}  // namespace kbuChess
