#include "tools/play/answers.h"

namespace rdv::play {
namespace {

void WriteMessage(JsonWriter& json, const MessageSeen& message) {
  json.BeginObject().Key("text").String(message.text).Key("title");
  if (message.title) {
    json.String(*message.title);
  } else {
    json.Null();
  }
  json.Key("style").Number(message.style);
  json.Key("answer").String(message.answer);
  json.EndObject();
}

void WriteEditor(JsonWriter& json, const EditorSeen& editor) {
  json.BeginObject().Key("visible").Bool(editor.visible);
  if (editor.visible) {
    json.Key("left").Rounded(editor.left);
    json.Key("top").Rounded(editor.top);
    json.Key("width").Rounded(editor.width);
    json.Key("text").String(editor.text);
    if (editor.index) json.Key("index").Number(*editor.index);
  }
  json.EndObject();
}

void WriteList(JsonWriter& json, const ListSeen& list) {
  json.BeginObject().Key("index").Number(list.index).Key("text").String(list.text);
  json.Key("entries").BeginArray();
  for (const ListSeen::Entry& entry : list.entries) {
    json.BeginArray().String(entry.caption).Number(entry.item_data).EndArray();
  }
  json.EndArray().Key("dropwidth").Number(list.drop_down_width).EndObject();
}

}  // namespace

void Answers::Done(std::string_view command, bool result) {
  Write(JsonWriter().BeginObject().Key(command).Bool(result).EndObject());
}

void Answers::Nothing(std::string_view command) {
  Write(JsonWriter().BeginObject().Key(command).Null().EndObject());
}

void Answers::Refused(TextView reason) {
  Write(JsonWriter().BeginObject().Key("refused").String(reason).EndObject());
}

void Answers::State(const StateSeen& state, int remove_me,
                    const std::vector<MessageSeen>& messages) {
  JsonWriter json;
  json.BeginObject().Key("state").BeginObject();
  json.Key("apply").Bool(state.apply_enabled);
  json.Key("configuration").Bool(state.configuration_enabled);
  json.Key("unittype").String(state.unit_type);
  json.Key("pointer").Number(state.pointer);
  json.Key("focus");
  if (state.focus) {
    json.String(*state.focus);
  } else {
    json.Null();
  }
  json.Key("removeme").Number(remove_me);
  json.Key("messages").BeginArray();
  for (const MessageSeen& message : messages) WriteMessage(json, message);
  json.EndArray().EndObject().EndObject();
  Write(json);
}

void Answers::Rows(const std::vector<RowSeen>& rows) {
  JsonWriter json;
  json.BeginObject().Key("rows").BeginArray();
  for (const RowSeen& row : rows) {
    json.BeginObject().Key("selected").Bool(row.selected).Key("cells").BeginArray();
    for (const Text& cell : row.cells) json.String(cell);
    json.EndArray().EndObject();
  }
  Write(json.EndArray().EndObject());
}

void Answers::Editors(const Named<EditorSeen>& editors) {
  JsonWriter json;
  json.BeginObject().Key("editors").BeginObject();
  for (const auto& [name, editor] : editors) WriteEditor(json.Key(name), editor);
  Write(json.EndObject().EndObject());
}

void Answers::Lists(const Named<ListSeen>& lists) {
  JsonWriter json;
  json.BeginObject().Key("lists").BeginObject();
  for (const auto& [name, list] : lists) WriteList(json.Key(name), list);
  Write(json.EndObject().EndObject());
}

void Answers::Geometry(const GeometrySeen& geometry) {
  JsonWriter json;
  json.BeginObject().Key("geometry").BeginObject();
  json.Key("grid").BeginObject();
  json.Key("left").Rounded(geometry.grid.left).Key("top").Rounded(geometry.grid.top);
  json.Key("width").Rounded(geometry.grid.width).Key("height").Rounded(geometry.grid.height);
  json.EndObject().Key("rows").BeginArray();
  for (const GeometrySeen::RowPlace& row : geometry.rows) {
    json.BeginObject().Key("left").Rounded(row.left).Key("top").Rounded(row.top);
    json.Key("height").Rounded(row.height).EndObject();
  }
  json.EndArray().Key("columns").BeginArray();
  for (const GeometrySeen::ColumnPlace& column : geometry.columns) {
    json.BeginObject().Key("left").Rounded(column.left);
    json.Key("width").Rounded(column.width).EndObject();
  }
  Write(json.EndArray().EndObject().EndObject());
}

void Answers::Stored(std::string_view what, const RowTable& table) {
  JsonWriter json;
  json.BeginObject().Key(what).BeginArray();
  for (const std::vector<Value>& row : table.rows) {
    json.BeginObject();
    for (size_t column = 0; column < row.size(); ++column) {
      json.Key(ToUtf8(table.columns[column])).Field(row[column]);
    }
    json.EndObject();
  }
  Write(json.EndArray().EndObject());
}

void Answers::Write(const JsonWriter& json) {
  out_ << json.Written() << '\n' << std::flush;
}

}  // namespace rdv::play
