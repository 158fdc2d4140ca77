// Pastes any bytes as a clip, at each kind of node: whatever they are, the database keeps its links.
#include "core/edit.h"
#include "tests/fuzz/require.h"
#include "view/clip.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace vexa;
  Context context;
  context.messages.tell = [](const Message&) {};
  context.messages.ask = [](const std::string&, const std::string&, bool) { return true; };
  for (int depth = 1; depth <= 5; ++depth) {
    Document document = NewDocument();
    StaticDatabase& database = *document.sdbs[0].database;
    AddLnb(context.messages, database, {});
    AddService(context.messages, database,
               *AddCarrier(context.messages, database, *AddSatellite(context.messages, database, {}), {}),
               {});
    const TreePath path = depth == 5 ? TreePath{0, 2, 0} : TreePath(static_cast<size_t>(depth), 0);
    TreePath at = path;
    if (depth > 1 && depth < 5) at[1] = kSatelliteLevelPosition;
    PasteNodes(context, document, NodesAlong(document, at).back(), {}, {data, size});
    for (const OpenSdb& sdb : document.sdbs)
      Require(CheckLinks(*sdb.database).empty(), "links after a paste");
  }
  return 0;
}
