{ A form that holds the control. Before: Component, Import Component, Import a Type Library,
  "TLV RDV Line Configuration 1.0"; that makes the unit TLV_RDV_Line_Config_TLB with the class
  TucRDVLineConfig. The control is made in code here, so that no form file is needed. }
unit LineForm;

interface

uses
  Windows, Messages, Classes, Controls, Forms, TLV_RDV_Line_Config_TLB;

type
  TLineForm = class(TForm)
  private
    FConfiguration: SmallInt;
    FLines: TucRDVLineConfig;
    procedure Shown(Sender: TObject);
    procedure RemoveME(Sender: TObject);
  public
    constructor CreateFor(AOwner: TComponent; Configuration: SmallInt);
  end;

implementation

constructor TLineForm.CreateFor(AOwner: TComponent; Configuration: SmallInt);
begin
  { CreateNew: without a form file. }
  inherited CreateNew(AOwner);
  FConfiguration := Configuration;
  Caption := 'Lines';
  ClientWidth := 920;
  ClientHeight := 448;
  FLines := TucRDVLineConfig.Create(Self);
  FLines.Parent := Self;
  FLines.Align := alClient;
  FLines.OnRemoveME := RemoveME;
  OnShow := Shown;
end;

procedure TLineForm.Shown(Sender: TObject);
begin
  { False: the control has told the user why. }
  if not FLines.ShowControl(FConfiguration) then
    PostMessage(Handle, WM_CLOSE, 0, 0);
end;

{ The control is still at work while it raises the event: the form closes by a message of its own. }
procedure TLineForm.RemoveME(Sender: TObject);
begin
  PostMessage(Handle, WM_CLOSE, 0, 0);
end;

end.
