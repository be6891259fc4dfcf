Attribute VB_Name = "LineForm"
' VBA: a user form "LineUserForm" with the control on it, named Lines. In the form's module:
'
'     Public Configuration As Integer
'     Private loaded As Boolean           ' the form is activated more than once
'
'     Private Sub UserForm_Activate()
'         If loaded Then Exit Sub
'         loaded = True
'         If Not Lines.ShowControl(Configuration) Then Me.Hide
'     End Sub
'
'     Private Sub Lines_RemoveME()
'         Me.Hide
'     End Sub
'
' The control is still at work while it raises the event. Hiding the form is allowed then; it is
' unloaded here, after Show has returned. So neither a timer is needed nor Application.OnTime, which
' Excel and Word have and Access, PowerPoint, Outlook and Visio have not.
Option Explicit

Public Sub ShowLines(ByVal configuration As Integer)
    Dim form As LineUserForm
    Set form = New LineUserForm
    form.Configuration = configuration
    form.Show vbModal
    Unload form
End Sub
