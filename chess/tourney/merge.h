#pragma once
// Merging the results files of one event: the slices of a run played on
// several machines, or a run and its resumed parts. Every (round, game) is
// counted once (a game found in two files is reported), files whose event
// settings differ are refused, and the figures are those of the live run:
// standings, the pair figures of the first player against each opponent,
// and the sequential test's state when the event has one.
//
// A results file's event is read beside it: NAME-RUN-results.tsv and
// NAME-RUN-K-of-N-results.tsv both belong to NAME-RUN-event.txt.
#include <string>
#include <vector>

#include "base/output.h"

namespace kbuChess {

// The event settings file of a results file.
std::string eventFileOf(const std::string& resultsPath);

// Prints the merged figures; false (with a "# merge: ..." line) when a file
// cannot be read, holds broken lines, or belongs to another event.
bool mergeResults(const std::vector<std::string>& files, kobubase::clsOutBuffer& out);

// "\merge FILES...": the files as shell-like words.
bool commandMerge(const std::string& args, kobubase::clsOutBuffer& out);

}  // namespace kbuChess
