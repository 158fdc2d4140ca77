// Pastes any bytes as a clip, at a node of the kind that the first byte chooses: whatever they are, the
// database keeps its links.
#include "core/edit.h"
#include "tests/fuzz/require.h"
#include "view/clip.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace vexa;
  Context context;
  context.messages.tell = [](const Message&) {};
  context.messages.ask = [](const std::string&, const std::string&, bool) { return true; };
  if (size == 0) return 0;
  const size_t depth = 1 + data[0] % 5;
  Document document = NewDocument();
  StaticDatabase& database = *document.sdbs[0].database;
  AddLnb(context.messages, database, {});
  Satellite* satellite = AddSatellite(context.messages, database, {});
  AddService(context.messages, database, *AddCarrier(context.messages, database, *satellite, {}), {});
  TreePath at = depth == 5 ? TreePath{0, 2, 0} : TreePath(depth, 0);
  if (depth > 1 && depth < 5) at[1] = kSatelliteLevelPosition;
  PasteNodes(context, document, NodesAlong(document, at).back(), {}, {data + 1, size - 1});
  for (const OpenSdb& sdb : document.sdbs) Require(CheckLinks(*sdb.database).empty(), "links after a paste");
  return 0;
}
