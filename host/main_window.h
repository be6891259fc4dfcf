// The administration program's window: a field for the configuration number, and the control.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "host/line_control.h"

namespace rdvhost {

struct Options {
  std::optional<std::wstring> configuration;  // its number, shown at once
  std::wstring ready_file;                    // written when that configuration is on the screen
  int width = 0;                              // of the control in pixels; 0 = its own size
  int height = 0;
};

class MainWindow {
 public:
  explicit MainWindow(const Options& options);
  MainWindow(const MainWindow&) = delete;
  MainWindow& operator=(const MainWindow&) = delete;

  // The message loop; ends when the window is closed.
  int Run();

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
  static LRESULT CALLBACK PanelProcedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
  LRESULT Handle(UINT message, WPARAM wparam, LPARAM lparam);

  void CreateChildren();
  void FitToControl();
  void LayOut();
  void ShowConfiguration();
  bool CreateControl();
  std::optional<SHORT> ConfigurationNumber() const;
  void RemoveControl();
  void WriteReadyFile(bool shown) const;
  SIZE WantedControlSize() const;

  const Options options_;
  HWND window_ = nullptr;
  HWND label_ = nullptr;
  HWND number_ = nullptr;
  HWND show_ = nullptr;
  HWND panel_ = nullptr;  // the control's place
  HWND focus_ = nullptr;  // had the keyboard when another program got it
  int dots_per_inch_ = 96;
  HFONT font_ = nullptr;
  std::unique_ptr<LineControl> control_;
};

}  // namespace rdvhost
