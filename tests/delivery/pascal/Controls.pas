unit Controls;
interface
uses Classes, Windows;
type
  TAlign = (alNone, alTop, alBottom, alLeft, alRight, alClient);
  TWinControl = class(TComponent)
  private
    FParent: TWinControl;
    FAlign: TAlign;
    FCaption: string;
    FClientWidth, FClientHeight: Integer;
    FHandle: HWND;
  public
    property Parent: TWinControl read FParent write FParent;
    property Align: TAlign read FAlign write FAlign;
    property Caption: string read FCaption write FCaption;
    property ClientWidth: Integer read FClientWidth write FClientWidth;
    property ClientHeight: Integer read FClientHeight write FClientHeight;
    property Handle: HWND read FHandle;
  end;
implementation
end.
