#include "platform/serial.h"

// The second needs the first.
// clang-format off
#include <windows.h>
#include <setupapi.h>
// clang-format on

#include <algorithm>
#include <array>
#include <map>

#include "platform/windows/wide.h"

namespace vexa {

namespace {

// The device class of serial and parallel ports; its name in the headers needs a library of names.
constexpr GUID kPortsClass = {0x4D36E978, 0xE325, 0x11CE, {0xBF, 0xC1, 0x08, 0x00, 0x2B, 0xE1, 0x03, 0x18}};

constexpr DWORD kCancelSteps = 1000;  // of a millisecond or more, for a wait for line events to end

struct Device : SerialDevice {
  HANDLE handle = INVALID_HANDLE_VALUE;
  ~Device() override {
    if (handle != INVALID_HANDLE_VALUE) CloseHandle(handle);
  }
};

struct Event : SerialEvent {
  HANDLE handle = nullptr;
  ~Event() override {
    if (handle) CloseHandle(handle);
  }
};

struct Pending {
  OVERLAPPED overlapped{};
  bool taken = false;    // by the system, which ends it; what it refuses at once it never ends
  SerialEventPtr event;  // lives as long as the system may signal it
  DWORD mask = 0;
  uint32_t* mask_to = nullptr;
};

HANDLE HandleOf(const SerialDevicePtr& device) {
  return static_cast<Device&>(*device).handle;
}
HANDLE HandleOf(const SerialEventPtr& event) {
  return static_cast<Event&>(*event).handle;
}

Outcome Done(BOOL done) {
  return done ? Outcome() : Outcome(LastSystemError());
}

Made<SerialDevicePtr> OpenDevice(const std::string& name) {
  // Names above COM9 are found in the device name space only; the low ones there too.
  const std::wstring path = name.rfind("\\\\", 0) == 0 ? Wide(name) : L"\\\\.\\" + Wide(name);
  const auto device = std::make_shared<Device>();
  device->handle = CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                               FILE_FLAG_OVERLAPPED | FILE_ATTRIBUTE_NORMAL, nullptr);
  if (device->handle == INVALID_HANDLE_VALUE) return LastSystemError();
  return device;
}

Outcome CloseDevice(const SerialDevicePtr& pointer) {
  Device& device = static_cast<Device&>(*pointer);
  if (!CloseHandle(device.handle)) return LastSystemError();
  device.handle = INVALID_HANDLE_VALUE;
  return true;
}

Made<SerialEventPtr> MakeEvent(bool manual_reset, bool signalled) {
  const auto event = std::make_shared<Event>();
  event->handle = CreateEventW(nullptr, manual_reset, signalled, nullptr);
  if (!event->handle) return LastSystemError();
  return event;
}

WaitResult WaitForEvents(std::span<const SerialEventPtr> events, uint32_t milliseconds) {
  std::array<HANDLE, 8> handles{};
  const size_t count = std::min(events.size(), handles.size());
  for (size_t i = 0; i < count; ++i) handles[i] = HandleOf(events[i]);
  const DWORD result = WaitForMultipleObjects(static_cast<DWORD>(count), handles.data(), FALSE, milliseconds);
  if (result == WAIT_TIMEOUT) return kWaitTimeout;
  if (result < WAIT_OBJECT_0 + count) return static_cast<int>(result - WAIT_OBJECT_0);
  return {kWaitFailed, LastSystemError()};
}

Outcome GetTimeouts(const SerialDevicePtr& device, CommTimeouts& timeouts) {
  COMMTIMEOUTS system{};
  if (!GetCommTimeouts(HandleOf(device), &system)) return LastSystemError();
  timeouts = {system.ReadIntervalTimeout, system.ReadTotalTimeoutMultiplier, system.ReadTotalTimeoutConstant,
              system.WriteTotalTimeoutMultiplier, system.WriteTotalTimeoutConstant};
  return true;
}

Outcome SetTimeouts(const SerialDevicePtr& device, const CommTimeouts& timeouts) {
  COMMTIMEOUTS system{timeouts.read_interval, timeouts.read_multiplier, timeouts.read_constant,
                      timeouts.write_multiplier, timeouts.write_constant};
  return Done(SetCommTimeouts(HandleOf(device), &system));
}

Outcome SetState(const SerialDevicePtr& device, const PortDcb& dcb) {
  DCB system{};
  system.DCBlength = dcb.length;
  system.BaudRate = dcb.baud_rate;
  system.fBinary = dcb.binary;
  system.fParity = dcb.parity_check;
  system.fOutxCtsFlow = dcb.cts_flow;
  system.fOutxDsrFlow = dcb.dsr_flow;
  system.fDtrControl = dcb.dtr_control & 3;
  system.fDsrSensitivity = dcb.dsr_sensitivity;
  system.fTXContinueOnXoff = dcb.continue_on_xoff;
  system.fOutX = dcb.out_x;
  system.fInX = dcb.in_x;
  system.fRtsControl = dcb.rts_control & 3;
  system.XonLim = dcb.xon_limit;
  system.XoffLim = dcb.xoff_limit;
  system.ByteSize = dcb.byte_size;
  system.Parity = dcb.parity;
  system.StopBits = dcb.stop_bits;
  system.XonChar = static_cast<char>(dcb.xon_char);
  system.XoffChar = static_cast<char>(dcb.xoff_char);
  return Done(SetCommState(HandleOf(device), &system));
}

Outcome ClearError(const SerialDevicePtr& device, CommStatus& status) {
  DWORD errors = 0;
  COMSTAT system{};
  if (!ClearCommError(HandleOf(device), &errors, &system)) return LastSystemError();
  status = {errors, 0, system.cbInQue};
  if (system.fCtsHold) status.flags |= 1;
  if (system.fDsrHold) status.flags |= 2;
  if (system.fRlsdHold) status.flags |= 4;
  if (system.fXoffHold) status.flags |= 8;
  if (system.fXoffSent) status.flags |= 16;
  if (system.fEof) status.flags |= 32;
  if (system.fTxim) status.flags |= 64;
  return true;
}

Outcome ModemStatus(const SerialDevicePtr& device, uint32_t& modem) {
  DWORD lines = 0;
  if (!GetCommModemStatus(HandleOf(device), &lines)) return LastSystemError();
  modem = lines;
  return true;
}

IoResult Failure(DWORD error) {
  if (error == ERROR_IO_PENDING || error == ERROR_IO_INCOMPLETE) return IoResult::kPending;
  if (error == ERROR_OPERATION_ABORTED) return IoResult::kAborted;
  return {IoResult::kFailed, {static_cast<int>(error), std::system_category()}};
}

bool IsRunning(const Pending& pending) {
  return pending.taken && !HasOverlappedIoCompleted(&pending.overlapped);
}

// What the system may still write to is not freed, ever.
void Release(Pending* pending) {
  if (!IsRunning(*pending)) delete pending;
}

IoResult Started(Pending& pending, BOOL done) {
  const IoResult result = done ? IoResult() : Failure(GetLastError());
  pending.taken = result == IoResult::kPending;
  return result;
}

std::shared_ptr<Pending> Start(Overlapped& overlapped) {
  const std::shared_ptr<Pending> pending(new Pending, Release);
  pending->event = overlapped.event;
  if (overlapped.event) pending->overlapped.hEvent = HandleOf(overlapped.event);
  overlapped.system = pending;
  return pending;
}

IoResult Read(const SerialDevicePtr& device, std::span<uint8_t> buffer, size_t& count,
              Overlapped& overlapped) {
  const auto pending = Start(overlapped);
  DWORD moved = 0;
  const BOOL done = ReadFile(HandleOf(device), buffer.data(), static_cast<DWORD>(buffer.size()), &moved,
                             &pending->overlapped);
  const IoResult result = Started(*pending, done);
  count = done ? moved : 0;
  return result;
}

IoResult Write(const SerialDevicePtr& device, std::span<const uint8_t> bytes, size_t& count,
               Overlapped* overlapped) {
  const auto pending = overlapped ? Start(*overlapped) : nullptr;
  DWORD moved = 0;
  const BOOL done = WriteFile(HandleOf(device), bytes.data(), static_cast<DWORD>(bytes.size()), &moved,
                              pending ? &pending->overlapped : nullptr);
  count = done ? moved : 0;
  if (pending) return Started(*pending, done);
  return done ? IoResult() : Failure(GetLastError());
}

IoResult WaitEvent(const SerialDevicePtr& device, uint32_t& mask, Overlapped& overlapped) {
  const auto pending = Start(overlapped);
  pending->mask_to = &mask;
  const BOOL done = WaitCommEvent(HandleOf(device), &pending->mask, &pending->overlapped);
  if (done) mask = pending->mask;
  return Started(*pending, done);
}

IoResult Result(const SerialDevicePtr& device, Overlapped& overlapped, size_t& count) {
  const auto pending = std::static_pointer_cast<Pending>(overlapped.system);
  count = 0;
  if (!pending) return IoResult::kFailed;
  DWORD moved = 0;
  SetLastError(ERROR_SUCCESS);
  if (!GetOverlappedResult(HandleOf(device), &pending->overlapped, &moved, FALSE))
    return Failure(GetLastError());
  count = moved;
  if (pending->mask_to) *pending->mask_to = pending->mask;
  return IoResult::kDone;
}

// Not by GetOverlappedResult: it waits for the event, which its owner may have signalled himself. Drivers
// that cannot cancel a wait for line events end it when the events change; one that does not end it at all
// keeps the memory, not the caller.
void CancelPending(const SerialDevicePtr& device, Overlapped& overlapped) {
  const auto pending = std::static_pointer_cast<Pending>(overlapped.system);
  overlapped.system = nullptr;
  if (!pending || !IsRunning(*pending)) return;
  CancelIoEx(HandleOf(device), &pending->overlapped);
  if (pending->mask_to) SetCommMask(HandleOf(device), 0);
  for (DWORD step = 0; IsRunning(*pending) && (!pending->mask_to || step < kCancelSteps); ++step) Sleep(1);
}

CommApi MakeApi() {
  CommApi api;
  api.platform = [] { return SerialPlatform::kWindowsNt; };  // the oldest system the program starts on is one
  api.create_file = OpenDevice;
  api.close_file = CloseDevice;
  api.create_event = MakeEvent;
  api.set_event = [](const SerialEventPtr& event) { SetEvent(HandleOf(event)); };
  api.reset_event = [](const SerialEventPtr& event) { ResetEvent(HandleOf(event)); };
  api.wait = WaitForEvents;
  api.get_timeouts = GetTimeouts;
  api.set_timeouts = SetTimeouts;
  api.set_state = SetState;
  api.setup_queues = [](const SerialDevicePtr& device, uint32_t receive, uint32_t transmit) {
    return Done(SetupComm(HandleOf(device), receive, transmit));
  };
  api.raise_dtr = [](const SerialDevicePtr& device) {
    return Done(EscapeCommFunction(HandleOf(device), SETDTR));
  };
  api.set_mask = [](const SerialDevicePtr& device, uint32_t mask) {
    return Done(SetCommMask(HandleOf(device), mask));
  };
  api.purge = [](const SerialDevicePtr& device, uint32_t what) {
    return Done(PurgeComm(HandleOf(device), what));
  };
  api.clear_error = ClearError;
  api.modem_status = ModemStatus;
  api.read = Read;
  api.write = Write;
  api.wait_event = WaitEvent;
  api.result = Result;
  api.cancel = CancelPending;
  api.cancel_all = [](const SerialDevicePtr& device) { CancelIoEx(HandleOf(device), nullptr); };
  api.start_thread = StartThread;
  return api;
}

std::wstring DeviceText(HDEVINFO devices, SP_DEVINFO_DATA& device, DWORD property) {
  std::array<wchar_t, 256> text{};
  SetupDiGetDeviceRegistryPropertyW(devices, &device, property, nullptr, reinterpret_cast<BYTE*>(text.data()),
                                    sizeof(wchar_t) * (text.size() - 1), nullptr);
  return text.data();
}

std::wstring PortNameOf(HDEVINFO devices, SP_DEVINFO_DATA& device) {
  HKEY key = SetupDiOpenDevRegKey(devices, &device, DICS_FLAG_GLOBAL, 0, DIREG_DEV, KEY_READ);
  if (key == INVALID_HANDLE_VALUE) return {};
  std::array<wchar_t, 64> name{};
  DWORD size = sizeof(wchar_t) * (name.size() - 1);
  RegQueryValueExW(key, L"PortName", nullptr, nullptr, reinterpret_cast<BYTE*>(name.data()), &size);
  RegCloseKey(key);
  return name.data();
}

// "USB Serial Port (COM3)" by port; the name at its end says nothing more and goes.
std::map<std::wstring, std::wstring> FriendlyNames() {
  std::map<std::wstring, std::wstring> names;
  HDEVINFO devices = SetupDiGetClassDevsW(&kPortsClass, nullptr, nullptr, DIGCF_PRESENT);
  if (devices == INVALID_HANDLE_VALUE) return names;
  SP_DEVINFO_DATA device{};
  device.cbSize = sizeof device;
  for (DWORD i = 0; SetupDiEnumDeviceInfo(devices, i, &device); ++i) {
    const std::wstring port = PortNameOf(devices, device), suffix = L" (" + port + L")";
    std::wstring name = DeviceText(devices, device, SPDRP_FRIENDLYNAME);
    if (name.empty()) name = DeviceText(devices, device, SPDRP_DEVICEDESC);
    if (name.ends_with(suffix)) name.resize(name.size() - suffix.size());
    if (!port.empty()) names[port] = name;
  }
  SetupDiDestroyDeviceInfoList(devices);
  return names;
}

}  // namespace

std::vector<SerialPortInfo> ListSerialPorts() {
  std::vector<SerialPortInfo> ports;
  const auto friendly = FriendlyNames();
  HKEY key = nullptr;
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"HARDWARE\\DEVICEMAP\\SERIALCOMM", 0, KEY_READ, &key) !=
      ERROR_SUCCESS) {
    return ports;
  }
  for (DWORD i = 0;; ++i) {
    std::array<wchar_t, 256> device{}, name{};
    DWORD device_size = device.size(), name_size = sizeof(wchar_t) * (name.size() - 1), type = 0;
    if (RegEnumValueW(key, i, device.data(), &device_size, nullptr, &type,
                      reinterpret_cast<BYTE*>(name.data()), &name_size) != ERROR_SUCCESS) {
      break;
    }
    const auto found = friendly.find(name.data());
    const std::wstring description =
        found == friendly.end() || found->second.empty() ? device.data() : found->second;
    if (type == REG_SZ) ports.push_back({Utf8(name.data()), Utf8(description)});
  }
  RegCloseKey(key);
  std::sort(ports.begin(), ports.end(), [](const auto& a, const auto& b) {
    return a.name.size() != b.name.size() ? a.name.size() < b.name.size() : a.name < b.name;
  });
  return ports;
}

// The system does not tell who holds a port, and refuses one that is held as it refuses what is forbidden;
// ports forbidden to a user are not known.
std::string PortRefusal(const std::string& name, const std::error_code& error) {
  if (CauseOf(error) == Cause::kInUse || CauseOf(error) == Cause::kNoPermission) return name + " is in use";
  return Reason(Attempt::kOpenPort, name, error);
}

bool IsSamePort(const std::string& one, const std::string& other) {
  const auto plain = [](const std::string& name) {
    std::string text = name.starts_with("\\\\.\\") ? name.substr(4) : name;
    for (char& character : text) {
      if (character >= 'a' && character <= 'z') character = static_cast<char>(character - 'a' + 'A');
    }
    return text;
  };
  return !one.empty() && plain(one) == plain(other);
}

const CommApi& SystemCommApi() {
  static const CommApi api = MakeApi();
  return api;
}

}  // namespace vexa
