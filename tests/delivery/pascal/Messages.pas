unit Messages;
interface
const WM_CLOSE = $0010;
implementation
end.
