// Images and transfers as the user meets them. The tests of the line run against a simulated receiver at COM1
// when VEXA_TEST_LINE says that there is one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "config/settings.h"
#include "core/messages.h"
#include "image/urt.h"
#include "platform/serial.h"
#include "tests/ui/editor_fixture.h"
#include "tests/ui/test_key.h"
#include "ui/forms/image_resource.h"
#include "ui/forms/options_resource.h"
#include "ui/forms/records_resource.h"
#include "ui/line/transfer_resource.h"
#include "view/command_table.h"

namespace vexa {

namespace {

using testing::HasSubstr;

class Transfers : public EditorTest {
 protected:
  Path Folder() { return recorder_.context.temporary_folder; }
  Path PutBytes(const std::string& name, const Bytes& bytes) {
    PutFile(Folder() / name, bytes);
    return Folder() / name;
  }
  // Two SDBs, each with one LNB and one satellite, and a user box record.
  Path PutDatabase() {
    Document document = NewDocument();
    AppendSdb(document, "SDB2");
    document.ubis.resize(1);
    document.ubis[0].name = "UBI1";
    for (OpenSdb& sdb : document.sdbs) {
      sdb.database->lnb_count = 1;
      AddTestSatellite(*sdb.database, sdb.name + " Sat")->record.angle = 192;
    }
    const auto bytes = BuildBin(recorder_.context, document, {}, {});
    EXPECT_TRUE(bytes.has_value());
    return PutBytes("list.bin", bytes.value_or(Bytes{}));
  }
  std::unique_ptr<EditorDriver> Start(std::vector<std::wstring> arguments = {L"--test-mode"}) {
    auto editor = std::make_unique<EditorDriver>(EditorProgram(), std::move(arguments));
    EXPECT_TRUE(editor->WaitForFrame());
    return editor;
  }
  std::unique_ptr<EditorDriver> StartWithDatabase(const std::wstring& mode = L"--test-mode") {
    auto editor = Start({mode, PutDatabase().native()});
    editor->Until("the database's window", [&] { return editor->Children().size() == 1; });
    return editor;
  }
};

void Click(HWND dialog, int id) {
  PostMessageW(GetDlgItem(dialog, id), BM_CLICK, 0, 0);
}

// The control with the focus of another process's window.
int FocusedId(HWND dialog) {
  GUITHREADINFO information{};
  information.cbSize = sizeof information;
  GetGUIThreadInfo(GetWindowThreadProcessId(dialog, nullptr), &information);
  return information.hwndFocus ? GetDlgCtrlID(information.hwndFocus) : 0;
}

void ExpectFocus(EditorDriver& editor, HWND dialog, int id) {
  editor.Until(
      Format("the focus at %d", id), [&] { return FocusedId(dialog) == id; }, 5);
}

// Answers the program's own message box; its text.
std::string Told(EditorDriver& editor) {
  HWND box = editor.WaitForBox("Vexa Editor " VEXA_VERSION);
  const std::string text = editor.MessageText(box);
  editor.Press(box, IDOK);
  return text;
}

TEST_F(Transfers, PortThatCannotBeOpenedIsToldTwice) {
  // The settings of this test name a port that no machine has.
  const TestKey key;
  key.Set(kPortSettingsKey, L"Port", L"COM99");
  const auto editor = StartWithDatabase(key.mode);
  for (const unsigned command : {kCmdUploadAdb, kCmdUploadThisSdb, kCmdDownload}) {
    SCOPED_TRACE(command);
    HWND box = editor->Open(command, "Serial Comm lib");
    EXPECT_EQ(editor->MessageText(box), "Port is not available.");
    EXPECT_EQ(editor->MessageDetail(box),
              PortRefusal("COM99", {ERROR_FILE_NOT_FOUND, std::system_category()}));
    editor->Press(box, IDOK);
    EXPECT_EQ(Told(*editor), "Can't open port.\nPort may be opened by another application.");
    EXPECT_TRUE(editor->Answers());
    EXPECT_TRUE(IsWindowEnabled(editor->frame()));
  }
  ExpectCleanEnd(*editor);
}

TEST_F(Transfers, SingleImageRefusesAndThenConverts) {
  const Bytes content(3000, 0x5A);
  const Path image = PutBytes("image.bin", content);
  const auto editor = Start();
  HWND dialog = editor->Open(kCmdSingleImage, "Single Image");
  Click(dialog, IDOK);
  EXPECT_EQ(Told(*editor), "Choose an image file.");
  ExpectFocus(*editor, dialog, IDC_IMAGE_FILE);
  Type(dialog, IDC_IMAGE_FILE, Utf8FromPath(image));
  Type(dialog, IDC_IMAGE_URT, Utf8FromPath(Folder() / "made.urt"));
  Pick(dialog, IDC_IMAGE_TYPE, 1);
  EXPECT_EQ(editor->Title(GetDlgItem(dialog, IDC_IMAGE_NAME)), "SDB Data") << "the region brings its name";
  Type(dialog, IDC_IMAGE_MAJOR, "12");
  Type(dialog, IDC_IMAGE_MINOR, "16");
  Click(dialog, IDOK);
  EXPECT_THAT(Told(*editor), HasSubstr("0 to 15"));
  ExpectFocus(*editor, dialog, IDC_IMAGE_MINOR);
  Type(dialog, IDC_IMAGE_MINOR, "7");
  Click(dialog, IDOK);
  EXPECT_THAT(Told(*editor), HasSubstr("made.urt\" is ready."));
  const auto file = ReadWholeFile(Folder() / "made.urt");
  ASSERT_TRUE(file.has_value());
  const UrtContent urt = ReadUrt(*file);
  EXPECT_TRUE(urt.findings.empty());
  EXPECT_EQ(urt.type, 4);
  EXPECT_EQ(urt.software_major, 12);
  EXPECT_EQ(urt.software_minor, 7);
  EXPECT_EQ(OriginalImage(urt), content);
  ExpectCleanEnd(*editor);
}

// Bytes that a compression makes the smaller the more it tries.
Bytes Uneven(size_t size) {
  Bytes bytes(size);
  uint32_t state = 1;
  for (size_t i = 0; i < size; ++i) {
    state = state * 1664525 + 1013904223;
    bytes[i] =
        i > 4000 && state >> 30 ? bytes[i - 300 - (state >> 8) % 3600] : static_cast<uint8_t>(state >> 27);
  }
  return bytes;
}

// A name that was typed is asked about, one that the system's dialog has asked about is not; the file holds
// the image in the way that was chosen.
TEST_F(Transfers, SingleImagesReplaceAFileOnceAskedAndAreCompressed) {
  const Bytes content = Uneven(60000);
  const Path image = PutBytes("image.bin", content), there = PutBytes("image.urt", Bytes(5, 5));
  const auto editor = Start();
  std::vector<uint32_t> sizes;
  for (const int level : {0, 8}) {
    editor->Command(kCmdBin2Urt);
    editor->ChooseFile("Open", image);
    HWND dialog = editor->WaitForBox("Bin2URT");
    Pick(dialog, IDC_IMAGE_TYPE, 2);
    Click(dialog, IDC_IMAGE_COMPRESSED);
    editor->Until("the levels", [&] { return IsWindowEnabled(GetDlgItem(dialog, IDC_IMAGE_LEVEL)); });
    Pick(dialog, IDC_IMAGE_LEVEL, level);
    if (level == 0) {
      Click(dialog, IDOK);
      HWND box = editor->WaitForBox("Vexa Editor 1.0.0");
      EXPECT_EQ(editor->BoxText(box), Utf8FromPath(there) + " already exists.\nDo you want to replace it ?");
      editor->Press(box, IDNO);
      EXPECT_EQ(std::filesystem::file_size(there), 5u);
    }
    Click(dialog, IDC_IMAGE_URT_BROWSE);
    editor->ChooseFile("Save", there);
    editor->Answer(IDYES);  // the system's question
    editor->Until("the dialog to close", [&] { return !editor->FindBox("Save"); });
    Click(dialog, IDOK);
    EXPECT_THAT(Told(*editor), HasSubstr("image.urt\" is ready."));
    const UrtContent urt = ReadUrt(ReadWholeFile(there).value_or(Bytes{}));
    EXPECT_TRUE(urt.findings.empty());
    EXPECT_EQ(OriginalImage(urt), content);
    sizes.push_back(urt.header ? urt.header->stored_size : 0);
  }
  EXPECT_LT(sizes[1], sizes[0]);
  EXPECT_LT(sizes[0], content.size());
  ExpectCleanEnd(*editor);
}

TEST_F(Transfers, ImageTooLargeBringsTheDialogBack) {
  const Path image = PutBytes("image.bin", Bytes(0x20000, 1));
  const auto editor = Start();
  editor->Command(kCmdBin2Urt);
  editor->ChooseFile("Open", image);
  HWND dialog = editor->WaitForBox("Bin2URT");
  EXPECT_EQ(editor->Title(GetDlgItem(dialog, IDC_IMAGE_FILE)), Utf8FromPath(image));
  EXPECT_EQ(editor->Title(GetDlgItem(dialog, IDC_IMAGE_URT)), Utf8FromPath(Folder() / "image.urt"));
  Pick(dialog, IDC_IMAGE_TYPE, 1);
  Type(dialog, IDC_IMAGE_NAME, "Kept");
  PutBytes("image.bin", Bytes(0x30000, 1));
  Click(dialog, IDOK);
  HWND box = editor->WaitForBox("URT Conversion");
  EXPECT_EQ(editor->MessageText(box), "Image exceeds the allowed memory space.");
  editor->Press(box, IDOK);
  dialog = editor->WaitForBox("Bin2URT");
  EXPECT_EQ(editor->Title(GetDlgItem(dialog, IDC_IMAGE_NAME)), "Kept");
  editor->Press(dialog, IDCANCEL);
  EXPECT_FALSE(std::filesystem::exists(Folder() / "image.urt"));
  ExpectCleanEnd(*editor);
}

TEST_F(Transfers, MultipleImageKeepsATypeForEachImage) {
  const Path images[] = {PutBytes("one.bin", Bytes(100, 1)), PutBytes("two.bin", Bytes(200, 2))};
  const auto editor = Start();
  HWND dialog = editor->Open(kCmdMultipleImage, "Multiple Image");
  EXPECT_FALSE(IsWindowEnabled(GetDlgItem(dialog, IDC_IMAGE_REMOVE)));
  for (const Path& image : {images[0], images[1], images[1]}) {
    const LRESULT before = Send(GetDlgItem(dialog, IDC_IMAGE_LIST), LVM_GETITEMCOUNT);
    Click(dialog, IDC_IMAGE_ADD);
    editor->ChooseFile("Add Images", image);
    editor->Until("the new row",
                  [&] { return Send(GetDlgItem(dialog, IDC_IMAGE_LIST), LVM_GETITEMCOUNT) == before + 1; });
  }
  Click(dialog, IDOK);
  EXPECT_EQ(Told(*editor), "Two images would be written to the same URT file.");
  Click(dialog, IDC_IMAGE_REMOVE);
  editor->Until("the row to go",
                [&] { return Send(GetDlgItem(dialog, IDC_IMAGE_LIST), LVM_GETITEMCOUNT) == 2; });
  Pick(dialog, IDC_IMAGE_TYPE, 2);
  PostMessageW(GetDlgItem(dialog, IDC_IMAGE_LIST), WM_KEYDOWN, VK_UP, 0);
  editor->Until("the first row's fields", [&] {
    return editor->Title(GetDlgItem(dialog, IDC_IMAGE_URT)) == Utf8FromPath(Folder() / "one.urt");
  });
  Pick(dialog, IDC_IMAGE_TYPE, 1);
  const Path there = PutBytes("two.urt", Bytes(5, 5));
  for (const int answer : {IDNO, IDYES}) {
    Click(dialog, IDOK);
    HWND box = editor->WaitForBox("Vexa Editor 1.0.0");
    EXPECT_EQ(editor->BoxText(box), Utf8FromPath(there) + " already exists.\nDo you want to replace it ?");
    EXPECT_EQ(std::filesystem::file_size(there), 5u) << "asked before";
    EXPECT_FALSE(std::filesystem::exists(Folder() / "one.urt"));
    editor->Press(box, answer);
  }
  EXPECT_EQ(Told(*editor), "2 URT files are ready.");
  const std::pair<const char*, int> made[] = {{"one.urt", 4}, {"two.urt", 2}};
  for (const auto& [name, type] : made) {
    const UrtContent urt = ReadUrt(ReadWholeFile(Folder() / name).value_or(Bytes{}));
    EXPECT_TRUE(urt.findings.empty()) << name;
    EXPECT_EQ(urt.type, type) << name;
  }
  ExpectCleanEnd(*editor);
}

TEST_F(Transfers, CompressionGoesThereAndBack) {
  const Bytes content = Uneven(60000);
  const Path file = PutBytes("text.txt", content), fast = Folder() / "fast.z";
  const auto editor = Start();
  HWND first = editor->Open(kCmdCompression, "Compression");
  Type(first, IDC_COMPRESSION_FILE, Utf8FromPath(file));
  Type(first, IDC_COMPRESSION_OUTPUT, Utf8FromPath(fast));
  Pick(first, IDC_COMPRESSION_LEVEL, 0);
  Click(first, IDOK);
  EXPECT_THAT(Told(*editor), HasSubstr("is ready: "));
  for (const bool expand : {false, true}) {
    HWND dialog = editor->Open(kCmdCompression, "Compression");
    if (expand) {
      Click(dialog, IDC_COMPRESSION_EXPAND);
      editor->Until("the level to grey",
                    [&] { return !IsWindowEnabled(GetDlgItem(dialog, IDC_COMPRESSION_LEVEL)); });
    }
    Type(dialog, IDC_COMPRESSION_FILE, Utf8FromPath(expand ? Path(file) += ".z" : file));
    EXPECT_EQ(editor->Title(GetDlgItem(dialog, IDC_COMPRESSION_OUTPUT)),
              Utf8FromPath(expand ? file : Path(file) += ".z"));
    if (expand) Type(dialog, IDC_COMPRESSION_OUTPUT, Utf8FromPath(PutBytes("back.txt", Bytes(7, 1))));
    if (!expand) Pick(dialog, IDC_COMPRESSION_LEVEL, 8);
    Click(dialog, IDOK);
    if (expand) {
      HWND box = editor->WaitForBox("Vexa Editor 1.0.0");
      EXPECT_THAT(editor->BoxText(box), HasSubstr("back.txt already exists.\nDo you want to replace it ?"));
      editor->Press(box, IDYES);
    }
    EXPECT_THAT(Told(*editor), HasSubstr("is ready: "));
  }
  EXPECT_EQ(ReadWholeFile(Folder() / "back.txt"), content);
  EXPECT_LT(std::filesystem::file_size(Path(file) += ".z"), std::filesystem::file_size(fast));
  ExpectCleanEnd(*editor);
}

// What a transfer dialog showed until it went.
struct Watched {
  std::vector<std::string> statuses, titles, figures;
  LRESULT furthest = 0;
};

Watched Watch(EditorDriver& editor, HWND dialog, double seconds = 60) {
  Watched seen;
  const auto note = [&](std::vector<std::string>& list, const std::string& text) {
    if (!text.empty() && (list.empty() || list.back() != text)) list.push_back(text);
  };
  editor.Until(
      "the transfer to end",
      [&] {
        if (!IsWindow(dialog)) return true;
        note(seen.titles, editor.Title(dialog));
        note(seen.statuses, editor.Title(GetDlgItem(dialog, IDC_TRANSFER_STATUS)));
        note(seen.figures, editor.Title(GetDlgItem(dialog, IDC_TRANSFER_FIGURES)));
        DWORD_PTR place = 0;
        SendMessageTimeoutW(GetDlgItem(dialog, IDC_TRANSFER_BAR), PBM_GETPOS, 0, 0, SMTO_NORMAL, 5000,
                            &place);
        seen.furthest = std::max(seen.furthest, static_cast<LRESULT>(place));
        return false;
      },
      seconds);
  return seen;
}

class Line : public Transfers {
 protected:
  void SetUp() override {
    if (!std::getenv("VEXA_TEST_LINE")) GTEST_SKIP() << "no receiver at COM1";
  }
};

TEST_F(Line, UploadsTheDatabaseAndFetchesItBack) {
  const auto editor = StartWithDatabase();
  ASSERT_TRUE(editor->SelectItem({"SDB2"}));
  HWND dialog = editor->Open(kCmdUploadAdb, "Transfer Data ( PC to STB )");
  Watched seen = Watch(*editor, dialog);
  EXPECT_THAT(seen.statuses,
              testing::Contains(testing::StartsWith("ADB upload inprogress.   \"SDB2\" as ADB data")));
  EXPECT_GT(seen.furthest, 10);
  ASSERT_FALSE(seen.figures.empty());
  EXPECT_THAT(seen.figures, testing::Contains(HasSubstr("bytes/s")));
  EXPECT_TRUE(editor->FindBox() == nullptr) << editor->BoxText(editor->FindBox());
  EXPECT_THAT(editor->Title(FindWindowExW(editor->frame(), nullptr, STATUSCLASSNAMEW, nullptr)),
              testing::AllOf(testing::StartsWith("ADB upload completed.   "), HasSubstr(" packets   ")));

  dialog = editor->Open(kCmdDownload);
  seen = Watch(*editor, dialog);
  EXPECT_THAT(seen.titles, testing::Contains("Download ( STB to PC )"));
  EXPECT_THAT(seen.statuses, testing::Contains(testing::StartsWith("Downloading inprogress")));
  EXPECT_GT(seen.furthest, 50);
  editor->Until("the fetched database", [&] { return editor->Children().size() == 2; });
  const auto fetched = editor->Tree(true);
  EXPECT_THAT(fetched, testing::Contains("    [ 1 ] SDB2 Sat")) << "the satellite that was sent";
  editor->Close();
  EXPECT_THAT(editor->Answer(IDNO), HasSubstr("Changes made are not saved."));
  EXPECT_EQ(editor->ExitCode(), 0u);
}

TEST_F(Line, UploadAsSdbOffersEverythingAndNeedsOneSdb) {
  const auto editor = StartWithDatabase();
  HWND dialog = editor->Open(kCmdUploadSdb, "Upload as SDB");
  HWND list = GetDlgItem(dialog, IDC_UPLOAD_LIST);
  ASSERT_EQ(Send(list, LVM_GETITEMCOUNT), 3) << "two SDBs and a box record";
  EXPECT_EQ(editor->CellOf(list, 1, 0), "SDB2");
  EXPECT_EQ(editor->CellOf(list, 2, 0), "UBI1");
  for (WPARAM i = 0; i < 3; ++i) EXPECT_EQ(Send(list, LVM_GETITEMSTATE, i, LVIS_STATEIMAGEMASK) >> 12, 2);
  // Space takes the tick of the focused row away.
  for (int i = 0; i < 2; ++i) {
    PostMessageW(list, WM_KEYDOWN, VK_SPACE, 0);
    PostMessageW(list, WM_KEYDOWN, VK_DOWN, 0);
    editor->Until("the tick to go", [&] {
      return Send(list, LVM_GETITEMSTATE, static_cast<WPARAM>(i), LVIS_STATEIMAGEMASK) >> 12 == 1;
    });
  }
  Click(dialog, IDOK);
  EXPECT_EQ(Told(*editor), "Add atleast one SDB to upload.");
  EXPECT_TRUE(IsWindowVisible(dialog));
  editor->Press(dialog, IDCANCEL);
  ExpectCleanEnd(*editor);
}

TEST_F(Line, SdbDataReplacesTheImageOnlyOnceAsked) {
  const auto editor = StartWithDatabase();
  for (const int type : {1, 0}) {  // only what was changed was chosen
    HWND dialog = editor->Open(kCmdSettings, "Settings");
    Pick(dialog, IDC_SETTINGS_IMAGE_TYPE, type);
    editor->Press(dialog, IDOK);
  }
  for (const unsigned command : {kCmdUploadThisSdb, kCmdUploadSdb}) {
    editor->Command(command);
    if (command == kCmdUploadSdb) editor->Press(editor->WaitForBox("Upload as SDB"), IDOK);
    EXPECT_EQ(editor->Answer(IDNO),
              "SDB data would replace the image in \"ADB Application\".\nDo you want to continue ?");
    EXPECT_TRUE(editor->HasCaughtUp());
    EXPECT_EQ(editor->FindBox(), nullptr);
  }
  ExpectCleanEnd(*editor);
}

TEST_F(Line, UploadsSdbs) {
  const auto editor = StartWithDatabase();
  HWND version = editor->Open(kCmdVersion);
  Type(version, IDC_VERSION_MAJOR, "7");
  editor->Press(version, IDOK);
  ASSERT_TRUE(editor->SelectItem({"SDB2"}));
  const auto statuses = [&] {
    HWND dialog = editor->WaitForBox("Transfer Data ( PC to STB )");
    const auto file = ReadUrtFile(editor->TemporaryFolder() / "TempURTFile.eut");
    const Bytes sent = file ? OriginalImage(*file).value_or(Bytes{}) : Bytes{};
    EXPECT_TRUE(sent.size() > 3 && sent[0] == 'Q' && sent[2] == 7) << "the window's version";
    return dialog ? Watch(*editor, dialog).statuses : std::vector<std::string>();
  };
  editor->Command(kCmdUploadThisSdb);
  EXPECT_THAT(statuses(), testing::Contains(HasSubstr("   \"SDB2\" as SDB data")));
  HWND dialog = editor->Open(kCmdUploadSdb, "Upload as SDB");
  Click(dialog, IDOK);
  EXPECT_THAT(statuses(), testing::Contains(HasSubstr("   \"SDB1\", \"SDB2\", \"UBI1\" as SDB data")));
  EXPECT_TRUE(editor->FindBox() == nullptr) << editor->BoxText(editor->FindBox());
  EXPECT_FALSE(std::filesystem::exists(editor->TemporaryFolder() / "TempURTFile.eut"))
      << "was not sent whole";
  ExpectCleanEnd(*editor);
}

// The frame's status line; its first part.
std::string FirstStatus(EditorDriver& editor) {
  return editor.Title(FindWindowExW(editor.frame(), nullptr, STATUSCLASSNAMEW, nullptr));
}

TEST_F(Line, AllButAClickOnCancelAsksAndTheOutcomeStaysUntilTheNextCommand) {
  const auto editor = StartWithDatabase();
  HWND dialog = editor->Open(kCmdUploadAdb, "Transfer Data ( PC to STB )");
  editor->Until("the first packets",
                [&] { return Send(GetDlgItem(dialog, IDC_TRANSFER_BAR), PBM_GETPOS) > 2; });
  HWND button = GetDlgItem(dialog, IDCANCEL);
  const std::function<void()> ways[] = {
      // The button is told of the key, and the dialog of the button.
      [&] {
        Send(button, WM_KEYDOWN, VK_SPACE, 1);
        PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
      },
      [&] { PostMessageW(button, WM_KEYDOWN, VK_ESCAPE, 1); },
      [&] { PostMessageW(dialog, WM_SYSCOMMAND, SC_CLOSE, 0); },
      [&] { PostMessageW(button, BM_CLICK, 0, 0); },  // as its access key does
      [&] {
        PostMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(button), TRUE);
        ExpectFocus(*editor, dialog, IDCANCEL);
        PostMessageW(button, WM_KEYDOWN, VK_RETURN, 1);
      }};
  for (const auto& way : ways) {
    way();
    HWND box = editor->WaitForBox("Vexa Editor 1.0.0");
    EXPECT_EQ(editor->BoxText(box), "Do you want to end the transfer ?");
    EXPECT_TRUE(IsWindow(dialog));
    editor->Press(box, &way - ways < 4 ? IDNO : IDYES);
  }
  editor->Until("the dialog to go", [&] { return !IsWindow(dialog); });
  EXPECT_THAT(editor->Answer(IDOK),
              testing::StartsWith("The receiver may hold a part of the data (packets sent: "));
  EXPECT_THAT(FirstStatus(*editor), testing::AllOf(testing::StartsWith("Cancelled: ADB upload inprogress."),
                                                   HasSubstr("switch it off and on and send it again.")));
  editor->Command(kCmdNew);
  EXPECT_EQ(FirstStatus(*editor), "");
  ExpectCleanEnd(*editor);
}

// The port is the program's own.
TEST_F(Line, AnUploadIsComparedWhileTheBoxIsTicked) {
  const auto editor = StartWithDatabase();
  for (const bool ticked : {false, true}) {
    HWND dialog = editor->Open(kCmdUploadAdb, "Transfer Data ( PC to STB )");
    HWND box = GetDlgItem(dialog, IDC_TRANSFER_VERIFY);
    EXPECT_EQ(Send(box, BM_GETCHECK) == BST_CHECKED, ticked) << "it stays as it was";
    if (!ticked) Send(box, BM_CLICK);
    Watch(*editor, dialog);
    dialog = editor->WaitForBox("Verifying");
    EXPECT_FALSE(IsWindowVisible(GetDlgItem(dialog, IDC_TRANSFER_VERIFY)));
    const Watched seen = Watch(*editor, dialog);
    EXPECT_THAT(seen.statuses, testing::Contains("Verifying"));
    EXPECT_THAT(FirstStatus(*editor), testing::AllOf(testing::StartsWith("ADB upload completed."),
                                                     testing::EndsWith(" s   Verification - Success")));
  }
  ExpectCleanEnd(*editor);
}

TEST_F(Line, AConnectedConsoleIsNamedAsTheOneThatHoldsThePort) {
  const auto editor = StartWithDatabase();
  editor->Command(kCmdPortload);
  editor->Command(kCmdConnect);
  PostMessageW(GetParent(editor->ActiveChild()), WM_MDIACTIVATE,
               reinterpret_cast<WPARAM>(editor->Children().at(0)), 0);
  editor->HasCaughtUp();
  for (const unsigned command : {kCmdUploadAdb, kCmdUploadThisSdb, kCmdDownload}) {
    editor->Command(command);
    EXPECT_THAT(Told(*editor), testing::AllOf(HasSubstr("console"), testing::Not(HasSubstr("another"))));
    EXPECT_TRUE(editor->HasCaughtUp());
    EXPECT_EQ(editor->FindBox(), nullptr);
  }
  editor->Close();
  EXPECT_EQ(editor->Answer(IDOK), "Do you want to close application ?");
  EXPECT_EQ(editor->ExitCode(), 0u);
}

TEST_F(Line, CancelsInTheMiddleAndOutlivesAnAttemptToClose) {
  const auto editor = StartWithDatabase();
  for (int round = 0; round < 2; ++round) {
    HWND dialog = editor->Open(kCmdUploadAdb, "Transfer Data ( PC to STB )");
    editor->Until("the first packets",
                  [&] { return Send(GetDlgItem(dialog, IDC_TRANSFER_BAR), PBM_GETPOS) > 5; });
    editor->Close();
    EXPECT_TRUE(editor->Answers());
    EXPECT_TRUE(IsWindow(dialog)) << "the frame waits for the transfer";
    editor->Click(GetDlgItem(dialog, IDCANCEL), {5, 5});
    editor->Until("the dialog to go", [&] { return !IsWindow(dialog); });
    EXPECT_THAT(editor->Answer(IDOK), testing::StartsWith("The receiver may hold a part of the data"));
    EXPECT_TRUE(editor->Answers());
    EXPECT_TRUE(editor->FindBox() == nullptr) << editor->BoxText(editor->FindBox());
  }
  ExpectCleanEnd(*editor);
}

}  // namespace

}  // namespace vexa
