// Plays scenarios on the registered component in a host's window: through its public interface and
// window messages only.
#pragma once

#include <memory>
#include <optional>

#include "tools/play/driver.h"
#include "tools/play/win32/container.h"
#include "tools/play/win32/control_windows.h"
#include "tools/play/win32/editor_user.h"
#include "tools/play/win32/grid_user.h"
#include "tools/play/win32/message_watch.h"
#include "tools/site_folder/site_folder.h"

namespace rdv::play {

class OleSession {
 public:
  OleSession() { Check(OleInitialize(nullptr), "OleInitialize"); }
  OleSession(const OleSession&) = delete;
  OleSession& operator=(const OleSession&) = delete;
  ~OleSession() { OleUninitialize(); }
};

class WindowsDriver : public Driver {
 public:
  void UseSite(const Text& folder) override;
  bool HasControl() const override { return container_ != nullptr; }
  void Create() override;
  void Destroy() override;

  bool ShowControl(int16_t config) override;
  void AssignIndextoDefaultBox(int16_t line1, int16_t line5) override;

  Refusal ClickCell(int row, int column, MousePress press) override;
  Refusal ClickAt(Twips x, Twips y, MousePress press) override;
  Refusal PressKey(char16_t key) override;
  Refusal PressGridKey(GridKey key) override;
  Refusal ClickHeader(int column) override;
  Refusal ResizeColumn(int column, Twips width) override;
  Refusal ScrollHorizontally(Twips distance) override;
  Refusal ScrollVertically(Twips distance) override;

  Refusal Pick(std::string_view list, int index) override;
  Refusal Type(std::string_view editor, TextView text) override;
  Refusal Paste(std::string_view editor, TextView text) override;
  Refusal Press(std::string_view button) override;

  void QueueAnswer(MessageAnswer answer) override { watch_.QueueAnswer(answer); }

  StateSeen State() override;
  int TakeRemoveMeCount() override;
  std::vector<MessageSeen> TakeMessages() override { return watch_.TakeMessages(); }

  std::vector<RowSeen> Rows() override { return Grid().Rows(); }
  EditorSeen EditorState(std::string_view editor) override { return At(editor).Editor(); }
  ListSeen ListState(std::string_view list) override;
  GeometrySeen Geometry() override { return Grid().Geometry(); }

 private:
  GridUser Grid() const { return GridUser(*windows_); }
  EditorUser At(std::string_view editor) const { return EditorUser(*windows_, editor); }
  int Pointer() const;

  OleSession ole_;
  std::optional<SiteFolder> site_;
  MessageWatch watch_;
  std::unique_ptr<Container> container_;
  std::optional<ControlWindows> windows_;
  int remove_me_count_ = 0;
  bool shown_ = false;  // ShowControl was called: it asks for the lists' widths
};

}  // namespace rdv::play
