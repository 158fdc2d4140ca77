#include "view/common_form.h"

#include <algorithm>
#include <functional>
#include <map>
#include <set>

#include "core/edit.h"

namespace vexa {

namespace {

template <class Form>
struct FormParts {
  std::vector<std::string Form::*> texts;
  std::vector<uint32_t Form::*> codes;
  std::vector<bool Form::*> flags;
  std::vector<int Form::*> zones = {};
};

const FormParts<LnbForm>& PartsOf(const LnbForm&) {
  static const FormParts<LnbForm> kParts = {{&LnbForm::frequency1, &LnbForm::frequency2},
                                            {&LnbForm::type, &LnbForm::power, &LnbForm::tone_22khz,
                                             &LnbForm::switch_type, &LnbForm::selection, &LnbForm::motor},
                                            {}};
  return kParts;
}
const FormParts<SatelliteForm>& PartsOf(const SatelliteForm&) {
  static const FormParts<SatelliteForm> kParts = {
      {&SatelliteForm::name, &SatelliteForm::angle, &SatelliteForm::position},
      {&SatelliteForm::lnb_index},
      {&SatelliteForm::east, &SatelliteForm::factory_default}};
  return kParts;
}
const FormParts<CarrierForm>& PartsOf(const CarrierForm&) {
  static const FormParts<CarrierForm> kParts = {
      {&CarrierForm::name, &CarrierForm::frequency, &CarrierForm::symbol_rate},
      {&CarrierForm::polarization, &CarrierForm::fec},
      {&CarrierForm::factory_default}};
  return kParts;
}
const FormParts<ServiceForm>& PartsOf(const ServiceForm&) {
  static const FormParts<ServiceForm> kParts = {
      {&ServiceForm::name, &ServiceForm::program_number, &ServiceForm::video_pid, &ServiceForm::audio_pid,
       &ServiceForm::pcr_pid},
      {&ServiceForm::type},
      {&ServiceForm::free}};
  return kParts;
}
const FormParts<UbiForm>& PartsOf(const UbiForm&) {
  static const FormParts<UbiForm> kParts = {
      {&UbiForm::name, &UbiForm::rf_channel, &UbiForm::start_volume, &UbiForm::start_programme,
       &UbiForm::lock_code},
      {&UbiForm::menu_language, &UbiForm::audio_language, &UbiForm::tv_standard, &UbiForm::screen},
      {&UbiForm::summer_time, &UbiForm::rf_output, &UbiForm::parental_lock},
      {&UbiForm::time_zone}};
  return kParts;
}

// Each question and each message once; an answer holds for all that ask the same.
struct OncePerText {
  const Messages& messages;
  std::set<std::string> told{};
  std::map<std::string, bool> answers{};

  Messages Wrapped() {
    return {[this](const Message& message) {
              if (told.insert(message.text).second) messages.tell(message);
            },
            [this](const std::string& text, const std::string& title, bool yes_is_default) {
              const auto known = answers.find(text);
              if (known != answers.end()) return known->second;
              return answers[text] = messages.ask(text, title, yes_is_default);
            }};
  }
};

// `forms` is not empty.
template <class Form>
CommonForm<Form> CommonOf(const std::vector<Form>& forms) {
  CommonForm<Form> common;
  common.form = forms[0];
  const auto& parts = PartsOf(forms[0]);
  const auto same = [&](auto part) {
    return std::all_of(forms.begin(), forms.end(),
                       [&](const Form& form) { return form.*part == forms[0].*part; });
  };
  for (const auto text : parts.texts)
    if (!same(text)) (common.form.*text).clear();
  for (const auto code : parts.codes)
    if (!same(code)) common.form.*code = kNoCode;
  for (const auto flag : parts.flags)
    if (!same(flag)) common.differing.push_back(flag);
  for (const auto zone : parts.zones)
    if (!same(zone)) common.form.*zone = kNoZone;
  return common;
}

// The form of the record that has `own`, after `entered` in a dialog that showed `shown`.
template <class Form>
Form WithEntered(const Form& own, const CommonForm<Form>& shown, const CommonForm<Form>& entered) {
  Form form = own;
  const auto& parts = PartsOf(own);
  for (const auto text : parts.texts)
    if (!(entered.form.*text).empty() || !(shown.form.*text).empty()) form.*text = entered.form.*text;
  for (const auto code : parts.codes)
    if (entered.form.*code != kNoCode) form.*code = entered.form.*code;
  for (const auto flag : parts.flags)
    if (!entered.Differs(flag)) form.*flag = entered.form.*flag;
  for (const auto zone : parts.zones)
    if (entered.form.*zone != kNoZone) form.*zone = entered.form.*zone;
  return form;
}

// `store` stores in one record what `form_of` and the dialog make of it; `records` are copies of all of them,
// put back by `restore` when one refuses.
template <class Form>
std::optional<Refusal> StoreEach(
    const Document* document, const std::vector<NodeRef>& rows, const CommonForm<Form>& shown,
    const CommonForm<Form>& entered, const std::function<Form(const NodeRef&)>& form_of,
    const std::function<std::optional<Refusal>(const NodeRef&, const Form&)>& store,
    const std::function<void()>& restore) {
  const bool single = rows.size() == 1;
  for (const NodeRef& row : rows) {
    auto refusal = store(row, single ? entered.form : WithEntered(form_of(row), shown, entered));
    if (!refusal) continue;
    restore();
    // A question answered No has no text.
    if (!single && !refusal->text.empty() && document)
      refusal->text = NodeLabel(*document, row) + ":\n" + refusal->text;
    return refusal;
  }
  return std::nullopt;
}

template <class Form, class FormOf>
CommonForm<Form> CommonOfRows(const std::vector<NodeRef>& rows, FormOf form_of) {
  std::vector<Form> forms;
  forms.reserve(rows.size());
  for (const NodeRef& row : rows) forms.push_back(form_of(row));
  return CommonOf(forms);
}

// Copies of what the nodes' records hold, to be put back.
template <class Record, class RecordOf>
std::function<void()> Restorer(const std::vector<NodeRef>& rows, RecordOf record_of) {
  std::vector<Record> records;
  records.reserve(rows.size());
  for (const NodeRef& row : rows) records.push_back(record_of(row));
  return [rows, records, record_of] {
    for (size_t i = 0; i < rows.size(); ++i) record_of(rows[i]) = records[i];
  };
}

LnbRecord& LnbAt(Document& document, const NodeRef& row) {
  return document.sdbs[row.sdb].database->lnbs[row.index];
}

}  // namespace

template <class Form>
bool CommonForm<Form>::Differs(bool Form::*flag) const {
  return std::find(differing.begin(), differing.end(), flag) != differing.end();
}

template struct CommonForm<LnbForm>;
template struct CommonForm<SatelliteForm>;
template struct CommonForm<CarrierForm>;
template struct CommonForm<ServiceForm>;
template struct CommonForm<UbiForm>;

CommonForm<LnbForm> CommonLnbs(const Document& document, const std::vector<NodeRef>& rows) {
  return CommonOfRows<LnbForm>(
      rows, [&](const NodeRef& row) { return LnbFormOf(document.sdbs[row.sdb].database->lnbs[row.index]); });
}
CommonForm<SatelliteForm> CommonSatellites(const std::vector<NodeRef>& rows, const CodePage& page) {
  return CommonOfRows<SatelliteForm>(
      rows, [&](const NodeRef& row) { return SatelliteFormOf(row.satellite->record, page); });
}
CommonForm<CarrierForm> CommonCarriers(const std::vector<NodeRef>& rows, const CodePage& page) {
  return CommonOfRows<CarrierForm>(
      rows, [&](const NodeRef& row) { return CarrierFormOf(row.carrier->record, page); });
}
CommonForm<ServiceForm> CommonServices(const std::vector<NodeRef>& rows, bool hexadecimal,
                                       const CodePage& page) {
  return CommonOfRows<ServiceForm>(
      rows, [&](const NodeRef& row) { return ServiceFormOf(row.service->record, hexadecimal, page); });
}
CommonForm<UbiForm> CommonUbis(const Document& document, const std::vector<NodeRef>& rows) {
  return CommonOfRows<UbiForm>(
      rows, [&](const NodeRef& row) { return UbiFormOf(document.ubis[row.index], NamesPage(document)); });
}

std::optional<Refusal> StoreCommon(Document& document, const std::vector<NodeRef>& rows,
                                   const CommonForm<LnbForm>& shown, const CommonForm<LnbForm>& entered,
                                   uint32_t database_variant) {
  const auto record_of = [&](const NodeRef& row) -> LnbRecord& { return LnbAt(document, row); };
  return StoreEach<LnbForm>(
      &document, rows, shown, entered, [&](const NodeRef& row) { return LnbFormOf(record_of(row)); },
      [&](const NodeRef& row, const LnbForm& form) {
        return StoreLnb(form, record_of(row), database_variant);
      },
      Restorer<LnbRecord>(rows, record_of));
}

std::optional<Refusal> StoreCommon(const Messages& messages, const std::vector<NodeRef>& rows,
                                   const CommonForm<SatelliteForm>& shown,
                                   const CommonForm<SatelliteForm>& entered, const CodePage& page) {
  OncePerText once{messages};
  const Messages wrapped = once.Wrapped();
  const auto record_of = [](const NodeRef& row) -> SatelliteRecord& { return row.satellite->record; };
  Document none;
  none.names = &page;
  return StoreEach<SatelliteForm>(
      &none, rows, shown, entered, [&](const NodeRef& row) { return SatelliteFormOf(record_of(row), page); },
      [&](const NodeRef& row, const SatelliteForm& form) {
        return StoreSatellite(wrapped, form, record_of(row), page);
      },
      Restorer<SatelliteRecord>(rows, record_of));
}

std::optional<Refusal> StoreCommon(Document& document, const std::vector<NodeRef>& rows,
                                   const CommonForm<CarrierForm>& shown,
                                   const CommonForm<CarrierForm>& entered) {
  const auto record_of = [](const NodeRef& row) -> CarrierRecord& { return row.carrier->record; };
  const CodePage& page = NamesPage(document);
  return StoreEach<CarrierForm>(
      &document, rows, shown, entered,
      [&](const NodeRef& row) { return CarrierFormOf(record_of(row), page); },
      [&](const NodeRef& row, const CarrierForm& form) {
        const LnbRecord& lnb = LnbOf(*document.sdbs[row.sdb].database, *row.carrier->satellite);
        return StoreCarrier(form, lnb, record_of(row), page);
      },
      Restorer<CarrierRecord>(rows, record_of));
}

std::optional<Refusal> StoreCommon(const Messages& messages, Document& document,
                                   const std::vector<NodeRef>& rows, const CommonForm<ServiceForm>& shown,
                                   const CommonForm<ServiceForm>& entered, bool hexadecimal) {
  OncePerText once{messages};
  const Messages wrapped = once.Wrapped();
  StaticDatabase& database = *document.sdbs[rows[0].sdb].database;
  const auto lists = database.favourites;
  const size_t entries = CountEntries(database);
  const auto record_of = [](const NodeRef& row) -> ServiceRecord& { return row.service->record; };
  const CodePage& page = NamesPage(document);
  const auto restore_records = Restorer<ServiceRecord>(rows, record_of);
  auto refusal = StoreEach<ServiceForm>(
      &document, rows, shown, entered,
      [&](const NodeRef& row) { return ServiceFormOf(record_of(row), hexadecimal, page); },
      [&](const NodeRef& row, ServiceForm form) {
        // Every type but TV's is shown as radio, and stays as it is until TV is chosen.
        if (form.type != kTv && record_of(row).type != kTv) form.type = record_of(row).type;
        return StoreService(wrapped, form, hexadecimal, database, *row.service, page);
      },
      [&] {
        restore_records();
        database.favourites = lists;
      });
  if (!refusal) TellLeftLists(messages, entries - CountEntries(database));
  return refusal;
}

std::optional<Refusal> StoreCommon(Document& document, const std::vector<NodeRef>& rows,
                                   const CommonForm<UbiForm>& shown, const CommonForm<UbiForm>& entered) {
  const auto record_of = [&](const NodeRef& row) -> OpenUbi& { return document.ubis[row.index]; };
  const CodePage& page = NamesPage(document);
  return StoreEach<UbiForm>(
      &document, rows, shown, entered, [&](const NodeRef& row) { return UbiFormOf(record_of(row), page); },
      [&](const NodeRef& row, const UbiForm& form) { return StoreUbi(form, record_of(row), page); },
      Restorer<OpenUbi>(rows, record_of));
}

void TellLeftLists(const Messages& messages, size_t entries) {
  if (entries > 0)
    Tell(messages, Icon::kInformation,
         "Removed from favourite lists: %zu.\nA service that changes between TV and radio leaves the lists "
         "of its old type.",
         entries);
}

size_t CountEntries(const StaticDatabase& database) {
  size_t count = 0;
  for (const FavouriteGroup& group : database.favourites) count += group.tv.size() + group.radio.size();
  return count;
}

}  // namespace vexa
