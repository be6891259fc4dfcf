unit TLV_RDV_Line_Config_TLB;
interface
uses Classes, Controls;
type
  TucRDVLineConfig = class(TWinControl)
  private
    FOnRemoveME: TNotifyEvent;
  public
    function ShowControl(Given_ConfigID: SmallInt): WordBool;
    property OnRemoveME: TNotifyEvent read FOnRemoveME write FOnRemoveME;
  end;
implementation
function TucRDVLineConfig.ShowControl(Given_ConfigID: SmallInt): WordBool;
begin Result := False; end;
end.
