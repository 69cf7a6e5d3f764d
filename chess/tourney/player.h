#pragma once
// A player of a tournament: how to start its engine and what it has scored.
// The tournament owns the players; every game thread that a player takes
// part in adds its points under the player's own lock.
#include <string>

#include "base/thread.h"
#include "chess/tourney/tourney_config.h"

namespace kbuChess {

// Wins, draws and losses of one player.
struct GameCounts {
  int wins = 0;
  int draws = 0;
  int losses = 0;
  int games() const { return wins + draws + losses; }
};

class clsPlayer {
 public:
  explicit clsPlayer(PlayerConfig config) : config_(std::move(config)) {}

  const std::string& name() const { return config_.name; }
  const std::string& filename() const { return config_.filename; }
  const std::string& parameters() const { return config_.parameters; }
  const std::string& protocol() const { return config_.protocol; }
  const PlayerConfig& config() const { return config_; }

  // Adds a finished game: 2 half-points a win, 1 a draw, 0 a loss. Returns
  // the new score in half-points.
  int addGame(int halfPoints);
  // Score in half-points.
  int score();
  GameCounts counts();

 private:
  PlayerConfig config_;
  kobubase::clsMutex lock_;
  int score_ = 0;
  GameCounts counts_;
};

}  // namespace kbuChess
