#pragma once
// Another program as a child process behind pipes.
//
// clsRedirectedChild starts a program with its standard input on one pipe and
// its standard output and error together on another, and is itself a thread:
// run() creates the process and then copies everything the child writes into
// a locked buffer, so the owner never blocks on a read. The owner sets the
// program and its parameters, calls start(), writes lines with sendLine() and
// takes complete lines with takeLine().
//
// The program runs in its own folder. Its parameters are split like a shell
// splits plain words (splitArguments); the whole command line (the quoted
// program, a blank, the parameters) is cut at 8191 characters. A program
// named without a folder is looked up in PATH.
//
// What is kept of the child's output can be bounded (limitOutput): a line
// longer than the line limit is cut there, and while more than the pending
// limit waits unread, new lines are dropped (reported once), so a flooding
// child costs neither memory nor the owner's attention.
//
// The child leads a process group of its own; close() ends the whole group,
// so a program that is a script leaves none of its children behind.
//
// No child outlives its owner: the child asks the kernel to kill it when the
// thread that started it ends (the reader thread, which ends with the process
// or the owner), close() kills it and reaps it, and the destructor gives a
// child that was just told to quit one second to go, then does the same.
// Writing to a dead child answers false; SIGPIPE is ignored process-wide
// from the first construction on, so a broken pipe never ends this program.
#include <sys/types.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>

#include "base/thread.h"

namespace kobubase {

class clsRedirectedChild : public clsThread {
 public:
  // The read buffer's size; deliberately 64536 bytes, not 65536.
  static constexpr std::size_t READ_BUFFER_BYTES = 64536;
  static constexpr std::size_t COMMAND_LINE_LIMIT = 8191;
  // How long the destructor lets a child that is still alive end by itself.
  static constexpr int DESTROY_GRACE_MS = 1000;
  // How long the reader waits in one poll: the latency of noticing a stop.
  static constexpr int POLL_MS = 10;
  // Usual bounds for a program that is not trusted: bytes kept of one line,
  // and unread bytes beyond which whole new lines are dropped.
  static constexpr std::size_t LINE_LIMIT = 64 * 1024;
  static constexpr std::size_t PENDING_LIMIT = 1 << 20;

  clsRedirectedChild(std::string program = "", std::string parameters = "");
  ~clsRedirectedChild() override;

  void setProgram(std::string program) { program_ = std::move(program); }
  void setParameters(std::string parameters) { parameters_ = std::move(parameters); }
  // Bounds what is kept of the output (see above); set before start().
  void limitOutput(std::size_t lineBytes, std::size_t pendingBytes) {
    lineLimit_ = lineBytes;
    pendingLimit_ = pendingBytes;
  }
  const std::string& program() const { return program_; }
  // The quoted program, a blank and the parameters, cut at 8191 characters.
  std::string commandLine() const;

  // Runs the reader thread, which creates the process.
  bool start() override;
  // Waits until run() has started the process or failed; whether it started.
  bool waitStarted(int timeoutMs = 5000);
  // Why the process could not be started ("" when it was, or is starting).
  std::string startError() const;
  // The system's error number of a failed start (0 when none).
  int startErrno() const { return phase_.load() == 2 ? startErrno_ : 0; }
  // Lines dropped because they came faster than they were taken.
  std::size_t droppedLines() const { return dropped_.load(); }

  // Writes text as it is; false at once when the child is not alive or the
  // write fails. An empty text writes nothing and answers true.
  bool send(const std::string& text);
  bool sendLine(const std::string& text) { return alive() && send(text + "\n"); }
  // The next complete line without its line end (trailing LF and CR
  // stripped), or "" when none has arrived; a partial line stays buffered.
  std::string takeLine();
  // Whether a complete line is waiting.
  bool hasLine();

  // True from the process's creation until it is found dead or closed.
  bool alive() const { return alive_.load(); }
  pid_t pid() const { return pid_.load(); }
  // The exit code once the child has ended and was reaped (128 + signal
  // number for a child killed by a signal); -1 before that.
  int exitStatus() const { return exitStatus_.load(); }
  // Waits up to timeoutMs for the child to end by itself; its exit status,
  // or -1 when it had to be killed.
  int waitExit(int timeoutMs);

  // Closes the child's standard input, so it reads end of file.
  void closeInput();
  // Kills the child (SIGKILL), reaps it, ends the reader thread and closes
  // every pipe. Harmless when the child has ended or never started.
  void close();
  // What the destructor does: up to DESTROY_GRACE_MS for a live child to end
  // by itself (it was usually just told to quit), then close(). A derived
  // class calls it in its own destructor, before its members go.
  void shutDown();

 protected:
  void run() override;
  // Comment lines about the child ("# process terminated!"); they go to the
  // serialised console output unless a derived class takes them.
  virtual void report(const std::string& line);

 private:
  bool createProcess();
  void readLoop();
  // Appends bytes read from the child within the limits; true when this
  // dropped the first line ever dropped.
  bool keep(const char* bytes, std::size_t count);
  void append(const char* bytes, std::size_t count);
  bool reapIfEnded(bool block);
  void closeFds();

  std::string buffer_;
  std::size_t taken_ = 0;  // bytes of buffer_ already handed out
  std::size_t lineLimit_ = SIZE_MAX;
  std::size_t pendingLimit_ = SIZE_MAX;
  std::size_t lineBytes_ = 0;  // bytes kept of the line being received
  bool dropLine_ = false;      // the line being received is dropped whole
  std::atomic<std::size_t> dropped_{0};
  int startErrno_ = 0;
  std::mutex bufferLock_;
  std::mutex writeLock_;
  std::mutex processLock_;  // guards reaping against killing a reused pid
  std::atomic<pid_t> pid_{0};
  std::atomic<bool> reaped_{false};
  std::atomic<int> exitStatus_{-1};
  int toChild_ = -1;    // this side's write end of the child's input
  int fromChild_ = -1;  // this side's read end of the child's output
  std::atomic<bool> alive_{false};
  std::atomic<int> phase_{0};  // 0 starting, 1 started, 2 failed
  std::string startError_;
  std::string program_;
  std::string parameters_;
};

}  // namespace kobubase
