// The dialogs of SDBs, user box records and favourite groups.
#include <array>
#include <set>

#include "config/project_config.h"
#include "platform/text.h"
#include "ui/controls/filter_field.h"
#include "ui/controls/form.h"
#include "ui/controls/virtual_list.h"
#include "ui/editor/change.h"
#include "ui/forms/common_controls.h"
#include "ui/forms/record_dialogs.h"
#include "ui/forms/records_resource.h"
#include "view/list_filter.h"
#include "view/node_edit.h"
#include "view/record_forms.h"

namespace vexa {

namespace {

constexpr int kLowestZone = -24, kHighestZone = 28;  // half hours
constexpr size_t kLanguageCode = 4;                  // bytes before a language's name

// Names of the configuration's languages; numbers for places that it has not. kNoCode chooses none.
void ShowLanguage(const Form& form, int id, const LanguageBlock& list, uint32_t chosen) {
  std::vector<std::string> names;
  for (const LanguageRecord& record : list.records) {
    char name[std::tuple_size_v<LanguageRecord> - kLanguageCode];
    std::copy(record.begin() + kLanguageCode, record.end(), name);
    names.push_back(Utf8FromLatin(NameOf(name)));
  }
  while (chosen != kNoCode && names.size() <= chosen)
    names.push_back(Format("%d", static_cast<int>(names.size()) + 1));
  form.Fill(id, names, static_cast<int>(chosen));
}

std::string ZoneText(int half_hours) {
  const int distance = half_hours < 0 ? -half_hours : half_hours;
  return Format("GMT %c%02d:%02d", half_hours < 0 ? '-' : '+', distance / 2, distance % 2 * 30);
}

int LowestZone(const UbiForm& shown) {
  return shown.time_zone == kNoZone ? kLowestZone : std::min(kLowestZone, shown.time_zone);
}

void ShowUbi(const Form& form, const CommonForm<UbiForm>& common) {
  const UbiForm& ubi = common.form;
  const ProjectConfig& config = form.app.config;
  form.Limit(IDC_RECORD_NAME, 7);
  form.Limit(IDC_BOX_RF_CHANNEL, 3);
  form.Limit(IDC_BOX_VOLUME, 3);
  form.Limit(IDC_BOX_PROGRAMME, 5);
  form.Limit(IDC_BOX_CODE, 4);
  form.SetText(IDC_RECORD_NAME, ubi.name);
  ShowLanguage(form, IDC_BOX_MENU_LANGUAGE, config.first_languages, ubi.menu_language);
  ShowLanguage(form, IDC_BOX_AUDIO_LANGUAGE, config.second_languages, ubi.audio_language);
  std::vector<std::string> zones;
  for (int zone = LowestZone(ubi); zone <= std::max(kHighestZone, ubi.time_zone); ++zone)
    zones.push_back(ZoneText(zone));
  form.Fill(IDC_BOX_TIME_ZONE, zones, ubi.time_zone == kNoZone ? -1 : ubi.time_zone - LowestZone(ubi));
  ShowFlag(form, IDC_BOX_SUMMER_TIME, common, &UbiForm::summer_time);
  ShowFlag(form, IDC_BOX_RF_OUTPUT, common, &UbiForm::rf_output);
  ShowFlag(form, IDC_BOX_LOCK, common, &UbiForm::parental_lock);
  // A code without a name stays until another one is chosen.
  form.Fill(IDC_BOX_STANDARD, {"PAL", "NTSC", "Auto"},
            ubi.tv_standard < 3 ? static_cast<int>(ubi.tv_standard) : -1);
  form.Fill(IDC_BOX_SCREEN, {"4:3", "16:9", "Letterbox"}, ubi.screen < 3 ? static_cast<int>(ubi.screen) : -1);
  form.SetText(IDC_BOX_RF_CHANNEL, ubi.rf_channel);
  form.SetText(IDC_BOX_VOLUME, ubi.start_volume);
  form.SetText(IDC_BOX_PROGRAMME, ubi.start_programme);
  form.SetText(IDC_BOX_CODE, ubi.lock_code);
}

CommonForm<UbiForm> TakenUbi(const Form& form, const UbiForm& shown) {
  CommonForm<UbiForm> common{shown};
  UbiForm& taken = common.form;
  taken.name = form.Text(IDC_RECORD_NAME);
  if (form.Choice(IDC_BOX_MENU_LANGUAGE) >= 0) taken.menu_language = form.Code(IDC_BOX_MENU_LANGUAGE);
  if (form.Choice(IDC_BOX_AUDIO_LANGUAGE) >= 0) taken.audio_language = form.Code(IDC_BOX_AUDIO_LANGUAGE);
  if (form.Choice(IDC_BOX_TIME_ZONE) >= 0)
    taken.time_zone = form.Choice(IDC_BOX_TIME_ZONE) + LowestZone(shown);
  TakeFlag(form, IDC_BOX_SUMMER_TIME, common, &UbiForm::summer_time);
  TakeFlag(form, IDC_BOX_RF_OUTPUT, common, &UbiForm::rf_output);
  TakeFlag(form, IDC_BOX_LOCK, common, &UbiForm::parental_lock);
  if (form.Choice(IDC_BOX_STANDARD) >= 0) taken.tv_standard = form.Code(IDC_BOX_STANDARD);
  if (form.Choice(IDC_BOX_SCREEN) >= 0) taken.screen = form.Code(IDC_BOX_SCREEN);
  taken.rf_channel = form.Text(IDC_BOX_RF_CHANNEL);
  taken.start_volume = form.Text(IDC_BOX_VOLUME);
  taken.start_programme = form.Text(IDC_BOX_PROGRAMME);
  taken.lock_code = form.Text(IDC_BOX_CODE);
  return common;
}

int BoxControl(int field) {
  switch (field) {
    case kFieldRfChannel:
      return IDC_BOX_RF_CHANNEL;
    case kFieldStartVolume:
      return IDC_BOX_VOLUME;
    case kFieldStartProgramme:
      return IDC_BOX_PROGRAMME;
    case kFieldLockCode:
      return IDC_BOX_CODE;
    default:
      return IDC_RECORD_NAME;
  }
}

bool AcceptBox(EditorWindow& editor, const Form& form, const std::function<std::optional<Refusal>()>& store) {
  std::optional<Refusal> refusal;
  ChangeDocument(editor, [&] { return !(refusal = store()); });
  if (refusal) form.Refuse(*refusal, BoxControl(refusal->field));
  return !refusal;
}

// Both halves of a group, one of which is shown.
struct FavouritesForm {
  EditorWindow& editor;
  FavouriteGroup& group;
  const StaticDatabase& database;
  bool radio = false;
  std::array<std::string, 2> names;
  std::array<std::set<const Service*>, 2> chosen;
  NodeRef node;
  ListModel shown;  // services that the half can name and the filter lets through
  VirtualList list;

  size_t half() const { return radio ? 1 : 0; }
};

void ShowCount(const Form& form, const FavouritesForm& favourites) {
  form.SetText(IDC_FAVOURITES_COUNT,
               Format("%d of %d", static_cast<int>(favourites.chosen[favourites.half()].size()),
                      static_cast<int>(favourites.radio ? kMaximumRadioEntries : kMaximumTvEntries)));
}

void ShowCandidates(const Form& form, FavouritesForm& favourites) {
  favourites.shown = GroupCandidates(favourites.editor.document, favourites.node, favourites.radio);
  const size_t all = favourites.shown.rows.size();
  const ListFilter filter = ParseFilter(form.Text(IDC_FAVOURITES_FILTER));
  const std::string wrong = FilterRows(favourites.editor.document, favourites.shown, filter, false);
  const size_t count = favourites.shown.rows.size();
  form.SetText(IDC_FAVOURITES_STATUS, FilterStatus(filter, wrong, count, all));
  ShowRows(form, favourites.list, count, std::nullopt);
}

void ShowHalf(Form& form, FavouritesForm& favourites, bool radio) {
  favourites.radio = radio;
  SetText(form.window, radio ? "FGL Information (Radio)" : "FGL Information (TV)");
  form.Check(IDC_FAVOURITES_TV, !radio);
  form.Check(IDC_FAVOURITES_RADIO, radio);
  form.SetText(IDC_RECORD_NAME, favourites.names[favourites.half()]);
  ShowCandidates(form, favourites);
  ShowCount(form, favourites);
}

void SetUpFavourites(FavouritesForm& favourites) {
  VirtualList& list = favourites.list;
  list.id = IDC_FAVOURITES_LIST;
  list.text = [&](size_t row, int column) {
    // Behind the number: names of service, carrier and satellite.
    return CellText(favourites.editor.document, favourites.shown, row, static_cast<size_t>(column) + 1,
                    false);
  };
  list.ticked = [&](size_t row) {
    return favourites.chosen[favourites.half()].contains(favourites.shown.rows[row].service);
  };
  list.tick = [&](const Form&, size_t row, bool ticked) {
    auto& chosen = favourites.chosen[favourites.half()];
    if (ticked) {
      chosen.insert(favourites.shown.rows[row].service);
    } else {
      chosen.erase(favourites.shown.rows[row].service);
    }
  };
  list.ticked_rows = [&](const Form& form) { ShowCount(form, favourites); };
}

bool AcceptFavourites(Form& form, FavouritesForm& favourites) {
  favourites.names[favourites.half()] = form.Text(IDC_RECORD_NAME);
  const Messages& messages = favourites.editor.app->context.messages;
  // Everything is tried on a copy first: the group takes all of it or nothing.
  FavouriteGroup group = favourites.group;
  for (const bool radio : {favourites.radio, !favourites.radio}) {
    if (const auto refusal = StoreGroupName(favourites.names[radio ? 1 : 0], group, radio,
                                            NamesPage(favourites.editor.document))) {
      if (radio != favourites.radio) ShowHalf(form, favourites, radio);
      form.Refuse(*refusal, IDC_RECORD_NAME);
      return false;
    }
    if (!SetEntries(messages, group, radio ? GroupKind::kRadio : GroupKind::kTv,
                    favourites.database.service_order, favourites.chosen[radio ? 1 : 0],
                    NamesPage(favourites.editor.document)))
      return false;
  }
  ChangeDocument(favourites.editor, [&] {
    favourites.group = std::move(group);
    return true;
  });
  return true;
}

}  // namespace

bool EditSdb(EditorWindow& editor, size_t sdb) {
  if (sdb >= editor.document.sdbs.size()) return false;
  OpenSdb& open = editor.document.sdbs[sdb];
  FormActions actions;
  actions.open = [&](Form& form) {
    form.Limit(IDC_RECORD_NAME, 6);
    form.SetText(IDC_RECORD_NAME, NameText(editor.document, open.name));
    form.Focus(IDC_RECORD_NAME);
  };
  actions.accept = [&](Form& form) {
    return AcceptBox(editor, form, [&] {
      return StoreSdbName(form.Text(IDC_RECORD_NAME), open, NamesPage(editor.document));
    });
  };
  return RunForm(*editor.app, IDD_EDIT_SDB, actions);
}

bool EditUserBoxes(EditorWindow& editor, const std::vector<NodeRef>& rows) {
  const CommonForm<UbiForm> shown = CommonUbis(editor.document, rows);
  FormActions actions;
  actions.open = [&](Form& form) {
    ShowCount(form, rows.size());
    ShowUbi(form, shown);
  };
  actions.accept = [&](Form& form) {
    return AcceptBox(editor, form,
                     [&] { return StoreCommon(editor.document, rows, shown, TakenUbi(form, shown.form)); });
  };
  return RunForm(*editor.app, IDD_USER_BOX, actions);
}

bool EditFavourites(EditorWindow& editor, const NodeRef& node, bool radio) {
  if (node.sdb >= editor.document.sdbs.size() || node.index >= kFavouriteGroups) return false;
  StaticDatabase& database = *editor.document.sdbs[node.sdb].database;
  FavouriteGroup& group = database.favourites[node.index];
  FavouritesForm favourites{editor, group, database, radio, {}, {}, node, {}, {}};
  favourites.names = {NameText(editor.document, group.record.tv_name),
                      NameText(editor.document, group.record.radio_name)};
  favourites.chosen[0].insert(group.tv.begin(), group.tv.end());
  favourites.chosen[1].insert(group.radio.begin(), group.radio.end());
  SetUpFavourites(favourites);
  FormActions actions;
  actions.anchors = ListAnchors(IDC_FAVOURITES_LIST);
  actions.resized = [&](Form& form) { FitLastColumn(form.Control(favourites.list.id)); };
  actions.open = [&](Form& form) {
    form.Limit(IDC_RECORD_NAME, static_cast<int>(kNameSize) - 1);
    SetUpList(form, favourites.list, {{"Service Name", 130}, {"Carrier Name", 120}, {"Satellite Name", 0}},
              nullptr);
    MakeFilterField(form.Control(IDC_FAVOURITES_FILTER), form.Control(favourites.list.id));
    ShowHalf(form, favourites, radio);
  };
  actions.notify = [&](Form& form, NMHDR& header) {
    return ListNotification(form, favourites.list, header).value_or(0);
  };
  actions.command = [&](Form& form, int id, int code) {
    if (code == EN_CHANGE && id == IDC_FAVOURITES_FILTER) return ShowCandidates(form, favourites);
    if (code != BN_CLICKED || (id != IDC_FAVOURITES_TV && id != IDC_FAVOURITES_RADIO)) return;
    favourites.names[favourites.half()] = form.Text(IDC_RECORD_NAME);
    ShowHalf(form, favourites, id == IDC_FAVOURITES_RADIO);
  };
  actions.accept = [&](Form& form) { return AcceptFavourites(form, favourites); };
  return RunForm(*editor.app, IDD_FAVOURITES, actions);
}

}  // namespace vexa
