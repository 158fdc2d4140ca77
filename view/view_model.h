// What a database window shows: the tree, the list beside it, the panel of counts, as data. The window asks
// for the parts that are seen and for no others, so that a database of 65,535 services opens as fast as a
// small one.
//
//   SDB ---+-- LNBs ---------- [ n ] LNB
//          +-- Satellites ---- [ n ] satellite ---- [ n ] carrier ---- [ n ] service
//          +-- TV Groups ----- name of the favourite group's TV list
//          +-- Radio Groups -- name of the favourite group's radio list
//   Box Infos --- UBI
//
// All texts are UTF-8. Numbers shown are one-based. A NodeRef is good until the document is changed.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "config/settings.h"
#include "core/database.h"
#include "core/field_texts.h"
#include "view/legible.h"

namespace vexa {

enum class NodeKind : uint8_t {
  kNone,
  kSdb,
  kLnbLevel,
  kSatelliteLevel,
  kTvGroupLevel,
  kRadioGroupLevel,
  kLnb,
  kSatellite,
  kCarrier,
  kService,
  kTvGroup,
  kRadioGroup,
  kFavouriteTvEntry,  // list rows only
  kFavouriteRadioEntry,
  kUbiLevel,
  kUbi,
};

struct NodeRef {
  NodeKind kind = NodeKind::kNone;
  uint32_t sdb = 0;    // position in Document::sdbs
  uint32_t index = 0;  // among its siblings, from 0; of an entry: within the favourite list
  uint32_t group = 0;  // favourite entries: their group
  Satellite* satellite = nullptr;
  Carrier* carrier = nullptr;
  Service* service = nullptr;

  bool operator==(const NodeRef&) const = default;
};

// The tree: its roots, and what is right below a node, from top to bottom.
std::vector<NodeRef> RootNodes(const Document& document);
std::vector<NodeRef> ChildNodes(const Document& document, const NodeRef& node);
// Whether anything is below, without making the nodes.
bool HasChildNodes(const Document& document, const NodeRef& node);
// What the tree shows of the node.
std::string NodeLabel(const Document& document, const NodeRef& node);

// The user's colour that its text has: whether there are services below it, or what it is.
ColourRole NodeColour(const Document& document, const NodeRef& node);
// The colour of such a text: the user's, or the system's own. In high contrast, and where it would be lost, a
// colour that the user has not chosen gives way to the system's.
uint32_t TextColour(const EditorColourTable& colours, ColourRole role, const SystemColours& system);

// What the records of siblings say, as numbers by which they are known again when their records are built
// anew: the same for the same record, whatever was added, deleted or moved around it. Equal siblings are told
// apart by their order. 0 for nodes that are known by their place.
std::vector<uint64_t> NodeContents(const std::vector<NodeRef>& siblings);

enum class NodeIcon : uint8_t {
  kSdb,
  kFolder,
  kLnb,
  kFactorySatellite,
  kUserSatellite,
  kFactoryCarrier,
  kUserCarrier,
  kTv,
  kRadio,
  kFavourite,
  kUbi,
};
// The picture of the node; kFolder for what holds others and is no record.
NodeIcon IconOf(const NodeRef& node);

// The list. What the view buttons choose holds for an SDB, its satellites, a satellite and a carrier; other
// nodes always show what is below them.
enum class ListView : uint8_t { kBelow, kCarriers, kServices, kTvServices, kRadioServices };
// Whether the view buttons mean anything for nodes of the kind.
bool HasViews(NodeKind kind);
// Whether nodes of the kind have this view: a carrier holds no carriers.
bool HasView(NodeKind kind, ListView view);
// What the list shows of a node of the kind when `view` is chosen: where that shows what is right below, the
// view that shows the same, if there is one.
ListView ViewShown(NodeKind kind, ListView view);

struct ListColumn {
  std::string title;
  int width = 80;  // at 96 dots an inch
  bool right = false;
};

struct ListModel {
  std::string title;
  std::vector<ListColumn> columns;
  std::vector<NodeRef> rows;
  // A list of details: names and values, no records. `rows` is empty then.
  std::vector<std::pair<std::string, std::string>> details;

  // Lines that the list shows.
  size_t size() const { return details.empty() ? rows.size() : details.size(); }
};

// What the list shows for a node of the tree; PIDs in decimal or hexadecimal.
ListModel ListBelow(const Document& document, const NodeRef& node, ListView view, bool hexadecimal);
// "Information": everything about one record; of the other nodes there is nothing to tell.
bool HasDetails(NodeKind kind);
ListModel DetailsOf(const Document& document, const NodeRef& node, bool hexadecimal);
// What to say instead when the record that the node names is not in the database; nullptr when it is.
const char* UnreadableText(const Document& document, const NodeRef& node);
// The text at a row and a column, both from 0 and both there.
std::string CellText(const Document& document, const ListModel& list, size_t row, size_t column,
                     bool hexadecimal);

// What a favourite group's dialog offers: the services of the list's type, and those that it names though
// they are of the other one, in running order.
ListModel GroupCandidates(const Document& document, const NodeRef& group, bool radio);

// Under which name the widths and the order of its columns are kept.
ColumnSet ColumnSetOf(const ListModel& list);

// The panel's five labels for the SDB (or the UBIs) that `node` belongs to; all empty without one.
std::array<std::string, 5> PanelLabels(const Document& document, const NodeRef& node);

}  // namespace vexa
