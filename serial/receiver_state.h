// What is known of a receiver when the work at it ended early, and what the user is told of it.
#pragma once

#include <cstdint>
#include <string>

namespace vexa {

struct ReceiverFacts {
  bool unopened = false;  // the port of the last transfer could not be opened
  uint64_t uploaded = 0;  // packets of uploads
  bool sent = false;      // an upload ran to its end
  bool differs = false;   // the comparison found something
};

// What state the receiver is in, and what to do next; a sentence without its capital letter and full stop.
std::string ReceiverState(const ReceiverFacts& facts);
// The same as a sentence.
std::string ReceiverStateSentence(const ReceiverFacts& facts);
// Whether it is left with something to be done that nothing else has told: the line of a status is not
// enough.
bool IsLeftUnsure(const ReceiverFacts& facts);

}  // namespace vexa
