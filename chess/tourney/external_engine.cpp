#include "chess/tourney/external_engine.h"

#include <cerrno>
#include <cstring>

#include "base/text.h"

namespace kbuChess {

clsExternalEngine::clsExternalEngine(const std::string& name, const std::string& program, const std::string& parameters,
                                     int protocol, clsGameLog* owner)
    : clsEngineInterface(name, protocol, owner), clsRedirectedChild(program, parameters) {
  limitOutput(LINE_LIMIT, PENDING_LIMIT);
}

clsExternalEngine::~clsExternalEngine() {
  if (alive()) Quit();
  shutDown();
}

bool clsExternalEngine::Start() {
  stopped_ = false;
  return start();
}

void clsExternalEngine::Stop() {
  Quit();
  for (int time = 0; time < 2; ++time) {
    kobubase::sleepMs(QUIT_GRACE_MS);
    close();
  }
  stopped_ = true;
}

void clsExternalEngine::Kill() {
  Quit();
  kobubase::sleepMs(QUIT_GRACE_MS);
  close();
}

std::string clsExternalEngine::ReadReply() {
  const std::string line = clsRedirectedChild::takeLine();
  if (line.empty()) return {};
  Log("<---\t" + line);
  return translate(line);
}

void clsExternalEngine::Send(const std::string& text) {
  Log("--->\t" + text);
  sendLine(text);
  if (commandPauseMs_ > 0) kobubase::sleepMs(commandPauseMs_);
}

std::string clsExternalEngine::StartProblem() {
  waitStarted();
  const int error = startErrno();
  if (error == 0) return {};
  const std::string why = " (" + std::string(std::strerror(error)) + ")";
  return (error == ENOENT ? "program not found: " : "cannot start ") + program() + why;
}

void clsExternalEngine::setCommandPause(int ms) {
  commandPauseMs_ = static_cast<int>(kobubase::clampTo(ms, 0, MAX_COMMAND_PAUSE_MS));
}

bool clsExternalEngine::IsAlive() {
  return ready_ && alive();
}

bool clsExternalEngine::HasEnded() {
  return !stopped_ && !isRunning() && !hasLine();
}

}  // namespace kbuChess
