unit Forms;
interface
uses Classes, Controls;
type
  TForm = class(TWinControl)
  private
    FOnShow: TNotifyEvent;
  public
    constructor CreateNew(AOwner: TComponent; Dummy: Integer = 0); virtual;
    property OnShow: TNotifyEvent read FOnShow write FOnShow;
  end;
implementation
constructor TForm.CreateNew(AOwner: TComponent; Dummy: Integer);
begin inherited Create(AOwner); end;
end.
