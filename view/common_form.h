// One dialog for several records: a form that shows what they have in common. What differs is empty, and what
// stays empty stays as each record has it; what is entered goes to all of them, which are judged one by one.
#pragma once

#include <optional>
#include <vector>

#include "view/record_forms.h"
#include "view/view_model.h"

namespace vexa {

// A form of a kind of record (LnbForm, SatelliteForm, CarrierForm, ServiceForm, UbiForm). Texts that differ
// are empty, codes kNoCode, a time zone kNoZone; flags that differ are named beside.
template <class Form>
struct CommonForm {
  Form form{};
  std::vector<bool Form::*> differing = {};

  bool Differs(bool Form::*flag) const;
};

// What the dialog shows for the nodes, which are of one kind and one SDB. `page`: of the document's names.
CommonForm<LnbForm> CommonLnbs(const Document& document, const std::vector<NodeRef>& rows);
CommonForm<SatelliteForm> CommonSatellites(const std::vector<NodeRef>& rows,
                                           const CodePage& page = Windows1252());
CommonForm<CarrierForm> CommonCarriers(const std::vector<NodeRef>& rows,
                                       const CodePage& page = Windows1252());
CommonForm<ServiceForm> CommonServices(const std::vector<NodeRef>& rows, bool hexadecimal,
                                       const CodePage& page = Windows1252());
CommonForm<UbiForm> CommonUbis(const Document& document, const std::vector<NodeRef>& rows);

// Store what was entered in all records of the rows, or, with a Refusal, in none. Of several records the
// Refusal names the one that it is about; a question or warning that several raise is put once. Services that
// change between TV and radio leave the favourite lists of their old type, which is told.
std::optional<Refusal> StoreCommon(Document& document, const std::vector<NodeRef>& rows,
                                   const CommonForm<LnbForm>& shown, const CommonForm<LnbForm>& entered,
                                   uint32_t database_variant);
std::optional<Refusal> StoreCommon(const Messages& messages, const std::vector<NodeRef>& rows,
                                   const CommonForm<SatelliteForm>& shown,
                                   const CommonForm<SatelliteForm>& entered,
                                   const CodePage& page = Windows1252());
std::optional<Refusal> StoreCommon(Document& document, const std::vector<NodeRef>& rows,
                                   const CommonForm<CarrierForm>& shown,
                                   const CommonForm<CarrierForm>& entered);
std::optional<Refusal> StoreCommon(const Messages& messages, Document& document,
                                   const std::vector<NodeRef>& rows, const CommonForm<ServiceForm>& shown,
                                   const CommonForm<ServiceForm>& entered, bool hexadecimal);
std::optional<Refusal> StoreCommon(Document& document, const std::vector<NodeRef>& rows,
                                   const CommonForm<UbiForm>& shown, const CommonForm<UbiForm>& entered);

// Tells that so many entries left the favourite lists as their services changed between TV and radio; nothing
// for none.
void TellLeftLists(const Messages& messages, size_t entries);
// All entries of all favourite lists.
size_t CountEntries(const StaticDatabase& database);

}  // namespace vexa
