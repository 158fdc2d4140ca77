// Sending to and fetching from the receiver.
#include <bit>

#include "config/settings.h"
#include "core/bin_file.h"
#include "core/messages.h"
#include "image/adb.h"
#include "image/decoder.h"
#include "platform/text.h"
#include "serial/backup.h"
#include "serial/prepare.h"
#include "serial/verdict.h"
#include "ui/controls/file_dialogs.h"
#include "ui/controls/form.h"
#include "ui/editor/editor.h"
#include "ui/line/console.h"
#include "ui/line/line_commands.h"
#include "ui/line/line_dialogs.h"
#include "ui/line/transfer_dialog.h"
#include "ui/line/transfer_resource.h"

namespace vexa {

namespace {

BinSelection OnlySdb(const EditorWindow& editor) {
  const OpenSdb* sdb = SelectedSdb(editor);
  const auto place = static_cast<unsigned>(sdb ? sdb - editor.document.sdbs.data() : 0);
  return {1u << place, 0};
}

// What goes to the receiver as ADB data.
struct AdbUpload {
  const Document& document;
  size_t sdb;
  std::string subject;
  const HeldMemory* held = nullptr;  // what the document was decoded from, which goes back as it was
};

// What a command ended with at the receiver is said, where it did not do all that it should.
void SayHowItIsLeft(Application& app, const ReceiverFacts& receiver) {
  const std::string text = ReceiverStateSentence(receiver);
  app.outcome += "   " + text;
  app.refresh_frame();
  if (IsLeftUnsure(receiver)) Tell(app.context.messages, Icon::kWarning, "%s", text.c_str());
}

StepEnd KeepCopy(Application& app, ReceiverFacts& receiver) {
  const Path folder = CopyFolder(app);
  std::error_code told_below;
  std::filesystem::create_directories(folder, told_below);
  std::vector<FileContent> copy;
  StepEnd end = StepEnd::kNotDone;
  auto files = MayKeepCopies(app.context, folder) ? PrepareDownload(app.context, app.config) : std::nullopt;
  if (files) {
    TransferOrder order;
    order.job = TransferJob::kDownload;
    order.files = std::move(files->script);
    order.region_files = std::move(files->regions);
    order.title = kKeepingCopy;
    order.decode = [&, config = app.config](const Context& context, bool crc_failed) {
      if (crc_failed) TellCrcFailed(context.messages, config.port_name);
      return !crc_failed && CollectCopy(context, config, copy);
    };
    const std::string name = BackupName(LocalTimeNow(), "");
    end = RunTransferDialog(app, std::move(order), receiver);
    if (copy.empty() || (end == StepEnd::kDone && !WriteCopy(app.context, folder, name, copy)))
      end = StepEnd::kNotDone;
  }
  if (end == StepEnd::kNotDone) Tell(app.context.messages, Icon::kWarning, "%s", kNothingSent);
  return end;
}

// Reads the receiver back. What differs has been shown when the dialog closes.
StepEnd Compare(Application& app, const AdbUpload& upload, ReceiverFacts& receiver) {
  const auto images = BuildAdbImages(app.context, upload.document, upload.sdb, app.config, upload.held);
  auto files = images ? PrepareDownload(app.context, app.config) : std::nullopt;
  if (!files) return StepEnd::kNotDone;
  Verdict verdict = Verdict::kNotCompared;
  TransferOrder order;
  order.job = TransferJob::kDownload;
  order.files = std::move(files->script);
  order.region_files = std::move(files->regions);
  order.title = order.status = kVerifying;
  order.decode = [&, config = app.config](const Context& context, bool crc_failed) {
    const StaticDatabase& database = *upload.document.sdbs[upload.sdb].database;
    verdict = JudgeDownload(context, config, database, *images, crc_failed);
    return verdict == Verdict::kSame;
  };
  const std::string sent = app.outcome;
  const StepEnd end = RunTransferDialog(app, std::move(order), receiver);
  receiver.differs = verdict == Verdict::kDiffers;
  if (end == StepEnd::kDone) app.outcome = sent + "   " + VerdictText(verdict);
  return end;
}

StepEnd Send(Application& app, const AdbUpload& upload, bool copied, ReceiverFacts& receiver) {
  if (!MayUploadAdb(app.context, app.config, upload.document)) return StepEnd::kNotDone;
  auto files = [&] {
    const WaitPointer wait;
    return PrepareAdbUpload(app.context, upload.document, upload.sdb, app.config, LocalTimeNow(),
                            upload.held);
  }();
  if (!files) return StepEnd::kNotDone;
  TransferOrder order;
  order.subject = upload.subject;
  order.files = std::move(*files);
  order.offers_choices = true;
  order.copied = copied;
  return RunTransferDialog(app, std::move(order), receiver);
}

void RunUpload(Application& app, const AdbUpload& upload) {
  // What the configuration or the receiver's room refuses is told before anything is fetched.
  if (!MayUploadAdb(app.context, app.config, upload.document) ||
      !BuildAdbImages(app.context, upload.document, upload.sdb, app.config, upload.held))
    return;
  UploadSteps steps = FirstUploadStep(LoadTransferSettings(app.settings));
  ReceiverFacts receiver;
  StepEnd end = StepEnd::kDone;
  while (steps.step != UploadStep::kEnd) {
    end = steps.step == UploadStep::kCopy   ? KeepCopy(app, receiver)
          : steps.step == UploadStep::kSend ? Send(app, upload, steps.copied, receiver)
                                            : Compare(app, upload, receiver);
    GoOn(steps, end, LoadTransferSettings(app.settings));
  }
  if (end == StepEnd::kNotDone) SayHowItIsLeft(app, receiver);
}

void UploadAdb(Application& app) {
  const EditorWindow& editor = *ActiveEditor(app);
  const Document& document = editor.document;
  if (!MayUploadAdb(app.context, app.config, document)) return;
  const BinSelection selection = OnlySdb(editor);
  const auto place = static_cast<size_t>(std::countr_zero(selection.sdbs));
  RunUpload(app, {document, place, UploadSubject(document, selection, TransferJob::kAdb)});
}

void Restore(Application& app) {
  if (!MayDownload(app.context, app.config)) return;
  CopyToSend back;
  if (const auto name = ChooseCopy(app, back))
    RunUpload(app, {back.document, 0, "\"" + *name + "\" as ADB data", &back.held});
}

void AddTick(HWND list, int place, const std::string& text) {
  std::wstring wide = Wide(text);
  LVITEMW item{};
  item.mask = LVIF_TEXT;
  item.iItem = place;
  item.pszText = wide.data();
  SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
  ListView_SetCheckState(list, place, TRUE);
}

// All ticked at first.
std::optional<BinSelection> ChooseWhatToSend(Application& app, const Document& document) {
  std::optional<BinSelection> selection;
  const std::vector<std::string> parts = PartsToSend(document);
  FormActions actions;
  actions.anchors = ListAnchors(IDC_UPLOAD_LIST);
  actions.open = [&](Form& form) {
    HWND list = form.Control(IDC_UPLOAD_LIST);
    SendMessageW(list, LVM_SETEXTENDEDLISTVIEWSTYLE, LVS_EX_CHECKBOXES, LVS_EX_CHECKBOXES);
    for (size_t i = 0; i < parts.size(); ++i) AddTick(list, static_cast<int>(i), parts[i]);
    ListView_SetItemState(list, 0, LVIS_FOCUSED | LVIS_SELECTED, LVIS_FOCUSED | LVIS_SELECTED);
  };
  actions.accept = [&](Form& form) {
    HWND list = form.Control(IDC_UPLOAD_LIST);
    std::vector<bool> ticked;
    for (size_t i = 0; i < parts.size(); ++i)
      ticked.push_back(ListView_GetCheckState(list, static_cast<int>(i)) != 0);
    selection = SelectionOf(document, ticked);
    if (!selection) form.Refuse({"Add atleast one SDB to upload."}, IDC_UPLOAD_LIST);
    return selection.has_value();
  };
  return RunForm(app, IDD_UPLOAD_SDBS, actions) ? selection : std::nullopt;
}

// Whether the port is there, before anything is prepared for it.
bool PortAnswers(Application& app) {
  TransferSession session;
  session.port.messages = app.context.messages;
  session.transfer.context = app.context;
  session.console_port = ConsolePort(app);
  return TestPort(session, app.config);
}

void SendSdbs(Application& app, const EditorWindow& editor, const BinSelection& selection) {
  if (!MayReplaceImage(app.context, app.config)) return;
  auto files = [&] {
    const WaitPointer wait;
    return PrepareSdbUpload(app.context, editor.document, selection, app.config, LocalTimeNow(),
                            editor.version);
  }();
  if (!files) return;
  TransferOrder order;
  order.job = TransferJob::kSdb;
  order.subject = UploadSubject(editor.document, selection, TransferJob::kSdb);
  order.files = std::move(*files);
  ReceiverFacts receiver;
  if (RunTransferDialog(app, std::move(order), receiver) != StepEnd::kDone) SayHowItIsLeft(app, receiver);
}

void UploadSdb(Application& app) {
  const EditorWindow& editor = *ActiveEditor(app);
  const Document& document = editor.document;
  if (!MayUploadSdb(app.context, app.config, document, IsAmongUbis(editor.selected)) || !PortAnswers(app))
    return;
  if (!AsksWhatToSend(app.config, document)) {
    SendSdbs(app, editor, OnlySdb(editor));
  } else if (const auto selection = ChooseWhatToSend(app, document)) {
    SendSdbs(app, editor, *selection);
  }
}

void UploadThisSdb(Application& app) {
  const EditorWindow& editor = *ActiveEditor(app);
  if (MayUploadSdb(app.context, app.config, editor.document, false) && PortAnswers(app)) {
    SendSdbs(app, editor, OnlySdb(editor));
  }
}

// Runs on the transfer's thread.
bool DecodeFetched(const Context& context, const ProjectConfig& config, const UserBoxInfo& user_box,
                   bool crc_failed, std::optional<DecodedImage>& decoded) {
  if (crc_failed &&
      !context.messages.ask(CrcFailedText() + "\n\nDo you want to open the data all the same ?", "", false)) {
    return false;
  }
  decoded = DecodeDownload(context, config, user_box);
  return decoded.has_value();
}

void Download(Application& app) {
  if (!MayDownload(app.context, app.config)) return;
  auto files = PrepareDownload(app.context, app.config);
  if (!files) return;
  const EditorWindow* editor = ActiveEditor(app);
  const UserBoxInfo user_box =
      editor && !editor->document.ubis.empty() ? editor->document.ubis[0].record : UserBoxInfo{};
  std::optional<DecodedImage> decoded;
  TransferOrder order;
  order.job = TransferJob::kDownload;
  order.files = std::move(files->script);
  order.region_files = std::move(files->regions);
  order.decode = [&, config = app.config](const Context& context, bool crc_failed) {
    return DecodeFetched(context, config, user_box, crc_failed, decoded);
  };
  ReceiverFacts receiver;
  if (RunTransferDialog(app, std::move(order), receiver) != StepEnd::kDone)
    return SayHowItIsLeft(app, receiver);
  if (!decoded) return;
  Document document;
  if (!OpenDecoded(app.context, *decoded, document)) return;
  OpenEditor(app, std::move(document), {}, true);
}

constexpr CommandRow kTransferCommands[] = {
    {kCmdUploadAdb, UploadAdb}, {kCmdUploadSdb, UploadSdb}, {kCmdUploadThisSdb, UploadThisSdb},
    {kCmdDownload, Download},   {kCmdRestore, Restore},     {kCmdProduction, ShowProduction}};

}  // namespace

std::span<const CommandRow> TransferCommands() {
  return kTransferCommands;
}

}  // namespace vexa
