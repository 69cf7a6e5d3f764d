#include "chess/tourney/learn_slices.h"

#include <filesystem>
#include <map>

#include "base/random.h"
#include "base/text.h"
#include "chess/tourney/tourney_config.h"
#include "chess/tourney/tourney_resume.h"

namespace kbuChess {

namespace {

namespace fs = std::filesystem;

bool wholeNumber(const std::string& text) {
  return text.size() < 10 && kobubase::allDigits(text);
}

// Reads FILE, saying what was refused in it; false (with a line) when it cannot be read.
bool readFile(const std::string& path, SoulFile& file, kobubase::clsOutBuffer& out) {
  const bool read = readSoulFile(path, file);
  for (const std::string& problem : file.problems) out.print(problem);
  return read;
}

std::string gamesText(const SoulGeneration& generation) {
  return std::to_string(generation.souls.size()) + " souls, " +
         std::to_string(generationGames(generation.souls.size()).size()) + " games";
}

// The rows kept from an earlier attempt at the slice: whole pairs of the generation.
bool keptRows(const std::string& path, int generation, std::vector<GameResultRow>& kept, kobubase::clsOutBuffer& out) {
  int dropped = 0;
  std::string problem;
  const ContinuedRows continued = continuedRows(path, generation, kept, dropped, problem);
  if (continued == ContinuedRows::REFUSED)
    out.print("# learn: " + path + " " + problem + "; the slice is not continued");
  if (continued == ContinuedRows::NOT_WRITTEN) out.print(problem);
  return continued == ContinuedRows::KEPT;
}

// The generation that slices play: the one FILE holds to play, numbered `given`.
const SoulGeneration* generationToPlay(const SoulFile& file, const std::string& path, const std::string& given,
                                       kobubase::clsOutBuffer& out) {
  const SoulGeneration* toPlay = file.toPlay();
  const std::string next = toPlay == nullptr ? std::string("; make one ready with -breed")
                                             : "; it holds generation " + std::to_string(toPlay->number) + " to play";
  if (!wholeNumber(given) || kobubase::readInteger(given) < 1) {
    out.print("# learn: -generation=" + given + " is not a generation number" + next);
    return nullptr;
  }
  const std::int64_t number = kobubase::readInteger(given);
  if (number <= file.lastNumber()) {
    out.print("# learn: generation " + given + " of " + path + " was already bred" + next);
    return nullptr;
  }
  if (toPlay == nullptr || toPlay->number != number) {
    out.print("# learn: " + path + " holds no generation " + given + " to play" + next);
    return nullptr;
  }
  return toPlay;
}

}  // namespace

std::string sliceResultsPath(const std::string& file, int generation, int index, int count) {
  return file + "-G" + std::to_string(generation) + "-" + std::to_string(index) + "-of-" + std::to_string(count) +
         "-results.tsv";
}

bool playLearnSlice(const LearnSliceRequest& request, clsLearningGames& games, const clsBook& book,
                    const std::atomic<bool>& stop, kobubase::clsOutBuffer& out) {
  if (request.file.empty() || !fs::exists(request.file)) {
    out.print("# learn: soul file " + request.file + " not found");
    return false;
  }
  SoulFile file;
  if (!readFile(request.file, file, out)) return false;
  const SoulGeneration* generation = generationToPlay(file, request.file, request.generation, out);
  if (generation == nullptr) return false;
  LearnSlice slice;
  const std::string shard = request.shard.empty() ? "0/1" : request.shard;
  const std::size_t slash = shard.find('/');
  std::string problem;
  if (!readShard(shard.substr(0, slash), slash == std::string::npos ? "" : shard.substr(slash + 1), slice.index,
                 slice.count, problem)) {
    out.print("# learn: " + problem);
    return false;
  }
  slice.threads = request.threads;
  slice.resultsPath = sliceResultsPath(request.file, generation->number, slice.index, slice.count);
  if (!keptRows(slice.resultsPath, generation->number, slice.rows, out)) return false;
  const std::size_t kept = slice.rows.size();
  std::string failure;
  clsRandomOpenings randomOpenings(generation->openingPlies);
  clsBookOpenings bookOpenings(book, generation->openingPlies);
  clsOpenings& openings = book.empty() ? static_cast<clsOpenings&>(randomOpenings) : bookOpenings;
  const bool played = playGenerationSlice(*generation, slice, games, openings, stop, failure);
  const std::string name = "slice " + shard + " of generation " + std::to_string(generation->number);
  if (!played) {
    out.print("# learn: " + name + " stopped" + (failure.empty() ? "" : ": " + failure) + " after " +
              std::to_string(slice.rows.size()) + " games; run it again to finish it");
    return false;
  }
  out.print("# learn: " + name + " done, " + std::to_string(slice.rows.size() - kept) + " games played, " +
            std::to_string(kept) + " kept, in " + slice.resultsPath);
  return true;
}

namespace {

// The slice files of a generation beside FILE: count -> index -> path.
std::map<int, std::map<int, std::string>> sliceFiles(const std::string& file, int generation) {
  std::map<int, std::map<int, std::string>> found;
  const fs::path path(file);
  const std::string prefix = path.filename().string() + "-G" + std::to_string(generation) + "-";
  std::error_code error;
  const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    const std::string name = entry.path().filename().string();
    if (name.rfind(prefix, 0) != 0 || !name.ends_with("-results.tsv")) continue;
    const std::string middle = name.substr(prefix.size(), name.size() - prefix.size() - 12);  // "K-of-N"
    const std::size_t of = middle.find("-of-");
    if (of == std::string::npos) continue;
    const std::string k = middle.substr(0, of), n = middle.substr(of + 4);
    if (!wholeNumber(k) || !wholeNumber(n)) continue;
    const int count = static_cast<int>(kobubase::readInteger(n)), index = static_cast<int>(kobubase::readInteger(k));
    found[count][index] = sliceResultsPath(file, generation, index, count);
  }
  return found;
}

// Every row of the generation's slices, each game once; false with a line when a slice is missing or unreadable.
bool mergedRows(const std::string& file, const SoulFile& soulFile, const SoulGeneration& generation,
                std::vector<GameResultRow>& merged, kobubase::clsOutBuffer& out) {
  const std::string number = std::to_string(generation.number);
  const auto found = sliceFiles(file, generation.number);
  if (found.empty()) {
    const int last = soulFile.lastNumber();
    if (last > 0 && !sliceFiles(file, last).empty()) {
      out.print("# learn: generation " + std::to_string(last) + " was already bred; " + file + " holds generation " +
                number + " to play");
    } else {
      out.print("# learn: no slice of generation " + number + " was played (" +
                sliceResultsPath(file, generation.number, 0, 1) + " or its K-of-N files)");
    }
    return false;
  }
  if (found.size() > 1) {
    out.print("# learn: generation " + number + " has slices of " + std::to_string(found.begin()->first) + " and of " +
              std::to_string(found.rbegin()->first) + "; keep the files of one count only");
    return false;
  }
  const int count = found.begin()->first;
  std::map<int, std::string> seen;  // game -> the file it came from
  const std::vector<LearnGame> games = generationGames(generation.souls.size());
  for (int index = 0; index < count; ++index) {
    const std::string name = "slice " + std::to_string(index) + "/" + std::to_string(count);
    const std::string path = sliceResultsPath(file, generation.number, index, count);
    std::vector<GameResultRow> rows;
    std::vector<std::string> problems;
    if (!fs::exists(path)) {
      out.print("# learn: " + name + " of generation " + number + " is missing: " + path);
      return false;
    }
    if (!readResultsFile(path, rows, problems) || !problems.empty()) {
      out.print("# learn: " + path + " " + problems.front() + "; run " + name + " again to finish it");
      return false;
    }
    for (GameResultRow& row : rows) {
      const auto [where, fresh] = seen.emplace(row.game, path);
      if (!fresh) {
        out.print("# learn: game " + std::to_string(row.game) + " of generation " + number + " is in " + where->second +
                  " and in " + path + "; counted once");
        continue;
      }
      merged.push_back(std::move(row));
    }
    int expected = 0, present = 0;
    for (const LearnGame& game : games) {
      if (game.pair % count != index) continue;
      ++expected;
      present += seen.count(game.number) > 0 ? 1 : 0;
    }
    if (present < expected) {
      out.print("# learn: " + name + " of generation " + number + " is incomplete, " + std::to_string(present) +
                " of " + std::to_string(expected) + " games; run it again to finish it");
      return false;
    }
  }
  return true;
}

bool writeFile(const std::string& path, const SoulFile& file, kobubase::clsOutBuffer& out) {
  std::string error;
  if (writeSoulFile(path, file, error)) return true;
  out.print(error);
  return false;
}

// The next generation to play after the file's last, from the settings given.
bool makeReady(const std::string& path, SoulFile& file, const PlaySettings& play, std::uint64_t seed,
               kobubase::clsOutBuffer& out) {
  if (file.lastNumber() == MAX_GENERATION_NUMBER) {
    out.print("# learn: " + path + " holds the last generation a soul file can hold: learn into a new file");
    return false;
  }
  if (seed == 0) seed = kobubase::clockSeed();
  file.generations.push_back(nextGeneration(file, play, seed));
  if (file.last().souls.size() < 2) {
    out.print("# learning needs at least 2 souls");
    return false;
  }
  if (!writeFile(path, file, out)) return false;
  out.print("# learn: " + path + " holds generation " + std::to_string(file.last().number) + " to play, " +
            gamesText(file.last()));
  return true;
}

}  // namespace

bool breedLearnSlices(const std::string& path, const PlaySettings& play, std::uint64_t seed,
                      kobubase::clsOutBuffer& out) {
  SoulFile file;
  if (!fs::exists(path)) {
    out.print("# soul file " + path + " not found, starting from the presets");
  } else if (!readFile(path, file, out)) {
    return false;
  }
  if (file.toPlay() == nullptr) return makeReady(path, file, play, seed, out);
  const SoulGeneration played = *file.toPlay();
  std::vector<GameResultRow> rows;
  SoulGeneration ranked;
  std::string problem;
  if (!mergedRows(path, file, played, rows, out)) return false;
  if (!rankGeneration(played, rows, ranked, problem)) {
    out.print(problem);
    return false;
  }
  std::int64_t ms = 0;
  for (const GameResultRow& row : rows) ms += row.ms;
  file.generations.push_back(ranked);
  out.print(generationLine(ranked, ms));
  const PlaySettings next{static_cast<int>(played.souls.size()), played.msPerMove, played.maxMoves,
                          played.openingPlies};
  return makeReady(path, file, next, followingSeed(played.seed), out);
}

}  // namespace kbuChess
