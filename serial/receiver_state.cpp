#include "serial/receiver_state.h"

#include "core/messages.h"

namespace vexa {

std::string ReceiverState(const ReceiverFacts& facts) {
  if (facts.differs) return "the receiver holds other data than it should; send it again";
  if (facts.sent)
    return "the receiver got all data, but was not compared; switch it off and on and verify it";
  if (facts.uploaded > 0)
    return Format(
        "the receiver may hold a part of the data (packets sent: %llu); switch it off and on and send it "
        "again",
        static_cast<unsigned long long>(facts.uploaded));
  if (facts.unopened)
    return "nothing was written, the receiver keeps what it had; try again when the port can be opened";
  return "nothing was written, the receiver keeps what it had; switch it off and on before the next try";
}

std::string ReceiverStateSentence(const ReceiverFacts& facts) {
  std::string text = ReceiverState(facts);
  text[0] = static_cast<char>(text[0] - 'a' + 'A');
  return text + ".";
}

bool IsLeftUnsure(const ReceiverFacts& facts) {
  return (facts.sent || facts.uploaded > 0) && !facts.differs;
}

}  // namespace vexa
