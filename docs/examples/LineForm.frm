VERSION 5.00
Object = "{6B0E2D9A-4C57-4F0B-9A38-51C7E2F4D801}#1.0#0"; "TLV_RDV_Line_Config.dll"
Begin VB.Form LineForm
   Caption         =   "Lines"
   ClientHeight    =   6720
   ClientWidth     =   13800
   Begin TLV_RDV_Line_Config.ucRDVLineConfig Lines
      Height          =   6720
      Left            =   0
      Top             =   0
      Width           =   13800
   End
   Begin VB.Timer Leaving
      Enabled         =   0   'False
      Interval        =   1
   End
End
Attribute VB_Name = "LineForm"
Option Explicit

Public ConfigID As Integer
Private loaded As Boolean

' Comes again whenever the user returns from another form; loading again would drop his changes.
Private Sub Form_Activate()
    If loaded Then Exit Sub
    loaded = True
    If Not Lines.ShowControl(ConfigID) Then Unload Me
End Sub

Private Sub Form_Resize()
    If WindowState <> vbMinimized Then Lines.Move 0, 0, ScaleWidth, ScaleHeight
End Sub

' The control is still at work while it raises the event: the form goes when it has returned.
Private Sub Lines_RemoveME()
    Leaving.Enabled = True
End Sub

Private Sub Leaving_Timer()
    Unload Me
End Sub
