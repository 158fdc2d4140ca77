// Long random sequences of operations, through the nodes that a window shows: the links hold after each, a
// refused one changes nothing, every step can be undone and redone to the bit, and what is saved opens again
// as it was.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>

#include "core/bin_file.h"
#include "core/sort.h"
#include "core/undo.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"
#include "view/node_edit.h"
#include "view/record_forms.h"
#include "view/row_order.h"

namespace vexa {
namespace {

// Beyond the links: the arrays of the SDB hold each list in its own order.
std::string ArraysFollowLists(const StaticDatabase& database) {
  std::map<const Satellite*, size_t> next_carrier;
  std::map<const Carrier*, size_t> next_service;
  for (const Carrier* carrier : database.carriers)
    if (carrier->satellite->carriers[next_carrier[carrier->satellite]++] != carrier) return "carrier array";
  for (const Service* service : database.services)
    if (service->carrier->services[next_service[service->carrier]++] != service) return "service array";
  return {};
}

std::string BoxDifference(const Document& one, const Document& other) {
  if (one.ubis.size() != other.ubis.size()) return "UBI count";
  for (size_t i = 0; i < one.ubis.size(); ++i)
    if (one.ubis[i].name != other.ubis[i].name ||
        std::memcmp(&one.ubis[i].record, &other.ubis[i].record, sizeof(UserBoxInfo)) != 0)
      return "UBI";
  // No file knows the flag of boxes that it does not hold.
  const bool same = one.compress_payload == other.compress_payload &&
                    (one.ubis.empty() || one.compress_ubis == other.compress_ubis);
  return same ? "" : "flags";
}

std::string Difference(const Document& one, const Document& other) {
  if (one.sdbs.size() != other.sdbs.size()) return "SDB count";
  for (size_t i = 0; i < one.sdbs.size(); ++i) {
    if (one.sdbs[i].slot != other.sdbs[i].slot || one.sdbs[i].name != other.sdbs[i].name)
      return "SDB name or slot";
    const std::string difference = DatabaseDifference(*one.sdbs[i].database, *other.sdbs[i].database, true);
    if (!difference.empty()) return one.sdbs[i].name + ": " + difference;
  }
  if (one.slot_mask != other.slot_mask || one.settings_block != other.settings_block) return "slots";
  return BoxDifference(one, other);
}

struct Player {
  enum class Result { kRefused, kDone, kSorted };

  std::mt19937 random;
  Recorder recorder;
  Document document;
  DefaultRecords defaults;

  explicit Player(unsigned seed) : random(seed), document(MakeRandomDocument(random)) {}
  const Messages& messages() { return recorder.context.messages; }
  size_t Upto(size_t highest) { return std::uniform_int_distribution<size_t>(0, highest)(random); }
  uint32_t Code(uint32_t highest) { return static_cast<uint32_t>(Upto(highest)); }
  bool Rarely() { return Upto(4) == 0; }
  template <class T>
  T* Any(const std::vector<T*>& list) {
    return list.empty() ? nullptr : list[Upto(list.size() - 1)];
  }
  StaticDatabase& Database() { return *document.sdbs[Upto(document.sdbs.size() - 1)].database; }

  NodeRef AnyNode() {
    auto nodes = RootNodes(document);
    while (true) {
      const NodeRef node = nodes[Upto(nodes.size() - 1)];
      nodes = ChildNodes(document, node);
      if (nodes.empty() || Rarely()) return node;
    }
  }
  // What a user selects in the list: mostly rows that follow one another.
  std::vector<NodeRef> AnyRows() {
    ListModel list = ListBelow(document, AnyNode(), static_cast<ListView>(Upto(4)), false);
    if (Rarely()) OrderRows(document, list, {static_cast<int>(Upto(8)), Upto(1) == 1}, false);
    std::vector<NodeRef> rows;
    for (size_t row = Upto(list.rows.size()); row < list.rows.size(); row += Rarely() ? 2 : 1) {
      rows.push_back(list.rows[row]);
      if (Upto(1) == 0) break;
    }
    return rows;
  }
  std::vector<Service*> AnyServices(const StaticDatabase& database) {
    std::vector<Service*> services;
    for (size_t i = Upto(4); i-- > 0 && !database.services.empty();)
      services.push_back(Any(database.services));
    return services;
  }
  std::string Number(size_t highest) { return std::to_string(Upto(highest)); }

  bool Delete() {
    const auto rows = Upto(9) == 0 ? std::vector<NodeRef>{AnyNode()} : AnyRows();
    const bool much = !rows.empty() && rows[0].kind <= NodeKind::kSatellite;
    return (!much || Rarely()) && DeleteNodes(messages(), document, rows);
  }

  bool Move() {
    const auto rows = AnyRows();
    const bool swap = Upto(1) == 1;
    if (!CheckMoveNodes(messages(), rows, swap)) return false;
    StaticDatabase& database = *document.sdbs[rows[0].sdb].database;
    if (rows[0].kind != NodeKind::kService || (!swap && Upto(1) == 0))
      return MoveNodes(messages(), document, rows, swap, Number(rows.back().index + 3));
    if (swap) return SwapServices(messages(), database, ServicesOf(rows));
    return MoveServicesToCarrier(messages(), database, ServicesOf(rows), *Any(database.carriers));
  }

  bool Drop() {
    auto rows = AnyRows();
    if (Upto(2) == 0) rows = {AnyNode()};
    if (rows.empty()) return false;
    NodeRef to = AnyNode();
    for (int i = 0; i < 20 && to.kind != rows[0].kind; ++i) to = AnyNode();
    return DropNodes(messages(), document, rows, to);
  }

  bool FillGroup() {
    StaticDatabase& database = Database();
    if (Upto(1) == 0) return AddRowsToGroup(messages(), document, AnyRows(), Code(8)).has_value();
    const auto services = AnyServices(database);
    return SetEntries(messages(), database.favourites[Upto(7)], static_cast<GroupKind>(Upto(1)),
                      database.services, {services.begin(), services.end()});
  }

  bool EditSatellite(SatelliteRecord& record) {
    SatelliteForm form = SatelliteFormOf(record);
    form.angle = Number(400);
    form.position = Number(70);
    return !StoreSatellite(messages(), form, record);
  }
  bool EditCarrier(const NodeRef& node) {
    CarrierForm form = CarrierFormOf(node.carrier->record);
    form.name = Rarely() ? "" : "Edited";
    const auto& database = *document.sdbs[node.sdb].database;
    return !StoreCarrier(form, LnbOf(database, *node.satellite), node.carrier->record);
  }
  bool EditService(const NodeRef& node) {
    ServiceForm form = ServiceFormOf(node.service->record, false);
    form.program_number = Number(9);
    form.type = Code(3);
    form.audio_pid = Number(9000);
    recorder.answer = Upto(1) == 1;
    return !StoreService(messages(), form, false, *document.sdbs[node.sdb].database, *node.service);
  }
  bool Edit() {
    const NodeRef node = AnyNode();
    auto& ubis = document.ubis;
    switch (node.kind) {
      case NodeKind::kSdb:
        return !StoreSdbName(Rarely() ? "" : Number(99), document.sdbs[node.sdb]);
      case NodeKind::kLnb:
        return !StoreLnb({Number(20000), "1", Code(3), 1, 2, Code(2), 3, 1},
                         document.sdbs[node.sdb].database->lnbs[node.index], Code(1));
      case NodeKind::kSatellite:
        return EditSatellite(node.satellite->record);
      case NodeKind::kCarrier:
        return EditCarrier(node);
      case NodeKind::kService:
        return EditService(node);
      case NodeKind::kTvGroup:
      case NodeKind::kRadioGroup:
        return !StoreGroupName(Rarely() ? "" : "News", Database().favourites[node.index], Upto(1) == 1);
      case NodeKind::kUbi: {
        UbiForm form = UbiFormOf(ubis[node.index]);
        form.lock_code = Number(9999);
        return !StoreUbi(form, ubis[node.index]);
      }
      default:
        Database().compressed ^= true;
        document.compress_payload ^= true;
        document.compress_ubis ^= !ubis.empty();
        return true;
    }
  }

  bool Sort() {
    const bool descending = Upto(1) == 1;
    return SortSdbs(messages(), document, {Upto(document.sdbs.size() - 1)},
                    {{{static_cast<SatelliteKey>(Upto(2))}, descending},
                     {{static_cast<CarrierKey>(Upto(2)), CarrierKey::kName}, descending},
                     {{static_cast<ServiceKey>(Upto(2)), ServiceKey::kName}, descending}});
  }

  bool Mark() {
    const auto& choices = FieldChoices();
    MarkNodes(document, AnyRows(), choices[Upto(choices.size() - 1)]);
    return true;
  }

  Result Step() {
    const size_t kind = Upto(14);
    const std::optional<ServiceType> types[] = {{}, kTv, kRadio};
    const auto type = types[Upto(2)];
    bool done = false;
    if (kind < 4) done = AddAtNode(messages(), document, AnyNode(), defaults, type).has_value();
    if (kind == 4) done = InsertAtRows(messages(), document, AnyRows(), defaults, type).has_value();
    if (kind == 5) done = Delete();
    if (kind == 6 || kind == 7) done = Move();
    if (kind == 8 || kind == 9) done = Drop();
    if (kind == 10) done = FillGroup();
    if (kind == 11) done = Mark();
    if (kind == 12 || kind == 13) done = Edit();
    if (kind == 14) done = Sort();
    return !done ? Result::kRefused : kind == 14 ? Result::kSorted : Result::kDone;
  }

  void CheckAll() {
    uint32_t mask = 0;
    for (const OpenSdb& sdb : document.sdbs) {
      ASSERT_EQ(CheckLinks(*sdb.database), "");
      ASSERT_EQ(ArraysFollowLists(*sdb.database), "");
      mask |= 1u << sdb.slot;
    }
    ASSERT_EQ(document.slot_mask, mask);
  }

  void CheckSaved() {
    const auto file = BuildBin(recorder.context, document, {}, {});
    ASSERT_TRUE(file);
    Document reopened;
    ASSERT_TRUE(OpenBinBytes(recorder.context, *file, reopened));
    ASSERT_EQ(*BuildBin(recorder.context, document, {}, {}), *file) << "not by what a save leaves behind";
    ASSERT_EQ(reopened.sdbs.size(), document.sdbs.size());
    ASSERT_EQ(BoxDifference(reopened, document), "");
    for (size_t i = 0; i < reopened.sdbs.size(); ++i) {
      const StaticDatabase& before = *document.sdbs[i].database;
      StaticDatabase& after = *reopened.sdbs[i].database;
      ASSERT_EQ(CheckLinks(after), "");
      ASSERT_EQ(after.satellites.size(), 85u);
      ASSERT_EQ(after.lnb_count, 16u);
      after.satellites.resize(before.satellites.size());
      after.lnb_count = before.lnb_count;
      ASSERT_EQ(DatabaseDifference(before, after), "");
      ASSERT_EQ(before.compressed, after.compressed);
    }
  }
};

// Which records stand where, by their addresses: what a slow model of an edit changes by hand.
struct Outline {
  using List = std::vector<const void*>;
  std::map<const void*, List>
      lists;  // by what holds the list: a satellite's carriers, a carrier's services ...
  bool operator==(const Outline&) const = default;

  static const void* SatellitesOf(const StaticDatabase& database) { return &database.satellites; }
  explicit Outline(const Document& document) {
    for (const OpenSdb& sdb : document.sdbs) {
      const StaticDatabase& database = *sdb.database;
      Put(SatellitesOf(database), database.satellites);
      Put(&database.service_order, database.service_order);
      for (const Satellite* satellite : database.satellites) Put(satellite, satellite->carriers);
      for (const Carrier* carrier : database.carriers) Put(carrier, carrier->services);
      for (const FavouriteGroup& group : database.favourites) {
        Put(&group.tv, group.tv);
        Put(&group.radio, group.radio);
      }
    }
  }
  template <class Record>
  void Put(const void* holder, const std::vector<Record*>& records) {
    lists[holder] = {records.begin(), records.end()};
  }
  // Takes the record out of every list, and with it what it holds.
  void Remove(const void* record) {
    for (auto& [holder, list] : lists) std::erase(list, record);
    const auto held = lists.find(record);
    if (held == lists.end()) return;
    const List below = held->second;
    lists.erase(held);
    for (const void* inner : below) Remove(inner);
  }
};

// The list that the row stands in.
const void* HolderOf(const Document& document, const NodeRef& row) {
  const StaticDatabase& database = *document.sdbs[row.sdb].database;
  switch (row.kind) {
    case NodeKind::kSatellite:
      return Outline::SatellitesOf(database);
    case NodeKind::kCarrier:
      return row.satellite;
    case NodeKind::kService:
      return row.carrier;
    case NodeKind::kFavouriteTvEntry:
      return &database.favourites[row.group].tv;
    case NodeKind::kFavouriteRadioEntry:
      return &database.favourites[row.group].radio;
    default:
      return nullptr;
  }
}

const void* RecordOf(const NodeRef& row) {
  if (row.kind == NodeKind::kSatellite) return row.satellite;
  return row.kind == NodeKind::kCarrier ? static_cast<const void*>(row.carrier) : row.service;
}

void ModelDelete(Outline& outline, const void* holder, const std::vector<NodeRef>& rows) {
  const bool entries =
      rows[0].kind == NodeKind::kFavouriteTvEntry || rows[0].kind == NodeKind::kFavouriteRadioEntry;
  if (!entries) {
    for (const NodeRef& row : rows) outline.Remove(RecordOf(row));
    return;
  }
  Outline::List kept;
  const Outline::List& list = outline.lists[holder];
  for (size_t i = 0; i < list.size(); ++i) {
    const auto chosen = [&](const NodeRef& row) { return row.index == i; };
    if (std::none_of(rows.begin(), rows.end(), chosen)) kept.push_back(list[i]);
  }
  outline.lists[holder] = kept;
}

// The run goes out and comes back: its first row at the target above it, its last row at one below it.
void ModelMove(Outline& outline, const void* holder, const std::vector<NodeRef>& rows, size_t target) {
  Outline::List& list = outline.lists[holder];
  Outline::List run, rest;
  for (size_t i = 0; i < list.size(); ++i)
    (i >= rows.front().index && i <= rows.back().index ? run : rest).push_back(list[i]);
  const size_t start = target > rows.back().index ? target + 1 - run.size() : target;
  rest.insert(rest.begin() + static_cast<std::ptrdiff_t>(start), run.begin(), run.end());
  list = rest;
}

// The states that the history goes through, whole.
struct States {
  UndoHistory history;
  std::vector<Document> states;
  std::vector<bool> sorts;  // whether a sort made the state
  size_t present = 0;
  std::optional<size_t> saved = 0;

  explicit States(const Document& document) {
    StartHistory(history, document);
    states.push_back(CopyDocument(document));
    sorts.push_back(false);
  }

  void Take(const Document& document, Player::Result result) {
    const std::string change = Difference(states[present], document);
    if (result == Player::Result::kRefused) {
      ASSERT_EQ(change, "");
    }
    const bool sort = result == Player::Result::kSorted;
    ASSERT_EQ(RecordChange(history, document, sort), !change.empty()) << change;
    if (change.empty()) return;
    if (saved && *saved > present) saved.reset();
    states.resize(++present);
    sorts.resize(present);
    states.push_back(CopyDocument(document));
    sorts.push_back(sort);
  }

  // As many steps back (below 0) or forth as there are, at most `steps`.
  void Go(int steps, Document& document) {
    for (; steps != 0; steps += steps < 0 ? 1 : -1) {
      const bool back = steps < 0;
      const bool there = back ? present > 0 : present + 1 < states.size();
      ASSERT_EQ(back ? Undo(history, document) : Redo(history, document), there);
      if (!there) return;
      present += back ? size_t(-1) : 1;
      ASSERT_EQ(Difference(states[present], document), "") << "state " << present;
      ASSERT_EQ(UndoesSort(history), sorts[present]);
      ASSERT_EQ(IsChanged(history), saved != present);
    }
  }
};

TEST(RandomEdits, KeepAllLinksAndEveryStateOfTheHistory) {
  size_t refused = 0, longest = 0;
  for (unsigned seed = 1; seed <= 30; ++seed) {
    SCOPED_TRACE(seed);
    Player player(seed);
    player.CheckSaved();
    States states(player.document);
    for (int i = 0; i < 120; ++i) {
      player.recorder.Texts();
      const auto result = player.Step();
      refused += result == Player::Result::kRefused && !player.recorder.Texts().empty();
      player.CheckAll();
      states.Take(player.document, result);
      if (player.Upto(9) == 0) states.Go(static_cast<int>(player.Upto(8)) - 6, player.document);
      if (player.Upto(19) == 0) {
        MarkSaved(states.history);
        states.saved = states.present;
      }
      player.CheckAll();
      if (testing::Test::HasFatalFailure()) return;
    }
    player.CheckSaved();
    longest = std::max(longest, states.states.size());
    states.Go(-1000, player.document);
    states.Go(1000, player.document);
    if (testing::Test::HasFatalFailure()) return;
  }
  EXPECT_GT(refused, 200u);
  EXPECT_GT(longest, 40u);
}

TEST(RandomEdits, EachDoesWhatASlowModelDoes) {
  std::map<std::string, int> tried;
  for (unsigned seed = 1; seed <= 60; ++seed) {
    Player player(seed);
    Document& document = player.document;
    for (int i = 0; i < 60; ++i) {
      auto rows = player.AnyRows();
      if (rows.empty() || !HolderOf(document, rows[0])) continue;
      const void* const holder = HolderOf(document, rows[0]);
      // A list that a column has sorted gives its rows in another order.
      std::sort(rows.begin(), rows.end(),
                [](const NodeRef& one, const NodeRef& other) { return one.index < other.index; });
      const bool one_list = std::all_of(
          rows.begin(), rows.end(), [&](const NodeRef& row) { return HolderOf(document, row) == holder; });
      const size_t size = Outline(document).lists[holder].size(), target = player.Upto(size - 1);
      Outline expected(document);
      bool done = false;
      const size_t kind = player.Upto(3);
      const char* const names[] = {"delete", "move", "swap", "insert"};
      SCOPED_TRACE(
          Format("seed %u step %d: %s of kind %d", seed, i, names[kind], static_cast<int>(rows[0].kind)));
      if (kind == 0) {
        if (rows[0].kind == NodeKind::kSatellite && !player.Rarely()) continue;
        ModelDelete(expected, holder, rows);
        done = DeleteNodes(player.messages(), document, rows);
      } else if (kind == 3) {
        const bool entries = rows[0].kind >= NodeKind::kTvGroup;
        if (entries || rows.size() != 1 ||
            document.sdbs[rows[0].sdb].database->satellites.size() >= kMaximumSatellites)
          continue;
        const auto added = InsertAtRows(player.messages(), document, rows, player.defaults);
        if (!added) continue;
        done = true;
        const void* const record = RecordOf(*added);
        auto& list = expected.lists[holder];
        list.insert(list.begin() + rows[0].index, record);
        if (rows[0].kind == NodeKind::kService)
          expected.lists[&document.sdbs[rows[0].sdb].database->service_order].push_back(record);
        if (rows[0].kind != NodeKind::kService) expected.lists[record];
      } else {
        const bool swap = kind == 2;
        // Services are swapped by a dialog of their own, and a place among the chosen ones is refused.
        const bool among = target > rows.front().index && target <= rows.back().index;
        if (!one_list || among || (swap && rows[0].kind == NodeKind::kService)) continue;
        done = MoveNodes(player.messages(), document, rows, swap, std::to_string(target + 1));
        if (done && swap) std::swap(expected.lists[holder][rows[0].index], expected.lists[holder][target]);
        if (done && !swap) ModelMove(expected, holder, rows, target);
      }
      if (!done) continue;
      ++tried[names[kind]];
      ASSERT_TRUE(Outline(document) == expected);
    }
  }
  for (const char* const name : {"delete", "move", "swap", "insert"}) EXPECT_GT(tried[name], 40) << name;
}

}  // namespace
}  // namespace vexa
