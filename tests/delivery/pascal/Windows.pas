unit Windows;
interface
type HWND = PtrUInt;
function PostMessage(Wnd: HWND; Msg: Cardinal; WParam, LParam: PtrInt): LongBool;
implementation
function PostMessage(Wnd: HWND; Msg: Cardinal; WParam, LParam: PtrInt): LongBool;
begin Result := False; end;
end.
