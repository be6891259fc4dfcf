// Plays scenarios on the control core with widgets that have no windows.
#pragma once

#include <deque>
#include <memory>
#include <optional>

#include "control/line_config_control.h"
#include "tools/play/driver.h"
#include "tools/site_folder/site_folder.h"
#include "widgets/memory/memory_form.h"

namespace rdv::play {

class MemoryDriver : public Driver {
 public:
  void UseSite(const Text& folder) override;
  bool HasControl() const override { return control_ != nullptr; }
  void Create() override;
  void Destroy() override;

  bool ShowControl(int16_t config) override { return control_->ShowControl(config); }
  void AssignIndextoDefaultBox(int16_t line1, int16_t line5) override {
    control_->AssignIndextoDefaultBox(line1, line5);
  }

  Refusal ClickCell(int row, int column, MousePress press) override;
  Refusal ClickAt(Twips x, Twips y, MousePress press) override;
  Refusal PressKey(char16_t key) override { return Grid().UserKey(key); }
  Refusal PressGridKey(GridKey key) override;
  Refusal ClickHeader(int column) override { return Grid().UserColumnClick(column); }
  Refusal ResizeColumn(int column, Twips width) override {
    return Grid().UserResizeColumn(column, width);
  }
  Refusal ScrollHorizontally(Twips distance) override {
    return Grid().UserScrollHorizontally(distance);
  }
  Refusal ScrollVertically(Twips distance) override {
    return Grid().UserScrollVertically(distance);
  }

  Refusal Pick(std::string_view list, int index) override { return List(list).UserPick(index); }
  Refusal Type(std::string_view editor, TextView text) override;
  Refusal Paste(std::string_view editor, TextView text) override;
  Refusal Press(std::string_view button) override;

  void QueueAnswer(MessageAnswer answer) override;

  StateSeen State() override;
  int TakeRemoveMeCount() override;
  std::vector<MessageSeen> TakeMessages() override;

  std::vector<RowSeen> Rows() override;
  EditorSeen EditorState(std::string_view editor) override;
  ListSeen ListState(std::string_view list) override;
  GeometrySeen Geometry() override;

 private:
  memory::MemoryLineGrid& Grid() { return form_->LVRDVLineConfig; }
  memory::MemoryComboBox& List(std::string_view name);
  // Null when no widget of that kind has the name.
  template <class Widget>
  Widget* Named(std::string_view name);
  void KeepMessages();

  std::optional<SiteFolder> site_;
  std::unique_ptr<memory::MemoryForm> form_;  // outlives the control
  std::unique_ptr<ucRDVLineConfig> control_;
  std::deque<MessageAnswer> answers_;  // while there is no form to give them to
  std::vector<MessageSeen> messages_;
  int remove_me_count_ = 0;
};

}  // namespace rdv::play
