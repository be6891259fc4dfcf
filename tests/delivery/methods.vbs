' Calls what the component offers, as a script does; every wrong answer is printed. The exit code is
' 42 when there was none, so that a script that does not run at all is noticed too.
'   cscript methods.vbs BITS FORM     FORM is yes where a form can be drawn and there is a site
Option Explicit

Const wrongArguments = 450, typeMismatch = 13, overflow = 6, noMember = 438
Dim bits, withForm, wrong, control, answer
bits = WScript.Arguments(0)
withForm = WScript.Arguments(1) = "yes"
wrong = 0

Sub Check(what, found, wanted)
    If found = wanted Then Exit Sub
    WScript.Echo bits & " bits: " & what & ": " & found & " instead of " & wanted
    wrong = wrong + 1
End Sub

Set control = CreateObject("TLV_RDV_Line_Config.ucRDVLineConfig")
Check "type of the control", TypeName(control), "_ucRDVLineConfig"

If withForm Then
    answer = control.AssignIndextoDefaultBox(6, 8)
    Check "type of AssignIndextoDefaultBox's result", VarType(answer), vbEmpty
    answer = control.AssignIndextoDefaultBox("5", 1)
    Check "type of its result, argument a text", VarType(answer), vbEmpty
    answer = control.ShowControl(1)
    Check "type of ShowControl's result", VarType(answer), vbBoolean
    Check "ShowControl", answer, True
    answer = control.ShowControl(1)
    Check "type of the second ShowControl's result", VarType(answer), vbBoolean
    Check "the second ShowControl", answer, True
End If

Sub Expect(what, wanted)
    Check "error number of " & what, Err.Number, wanted
    Err.Clear
End Sub

On Error Resume Next
answer = control.ShowControl("no number")
Expect "ShowControl of a text", typeMismatch
answer = control.ShowControl(70000)
Expect "ShowControl of a number beyond an Integer", overflow
answer = control.ShowControl()
Expect "ShowControl without an argument", wrongArguments
answer = control.ShowControl(1, 2)
Expect "ShowControl with two arguments", wrongArguments
answer = control.AssignIndextoDefaultBox(1)
Expect "AssignIndextoDefaultBox with one argument", wrongArguments
answer = control.AssignIndextoDefaultBox("x", 1)
Expect "AssignIndextoDefaultBox of a text", typeMismatch
answer = control.HideControl()
Expect "a method that there is not", noMember
If withForm Then
    answer = control.AssignIndextoDefaultBox(6, 8)
    Expect "AssignIndextoDefaultBox after the errors", 0
End If
On Error GoTo 0

Set control = Nothing
If wrong = 0 Then WScript.Quit 42
WScript.Quit 1
