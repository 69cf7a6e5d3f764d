#pragma once
// A player of a tournament: how to start its engine. The tournament owns the
// players; what they scored is counted over the run's result rows.
#include <string>

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

 private:
  PlayerConfig config_;
};

}  // namespace kbuChess
