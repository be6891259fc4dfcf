' Creates the control and has it load configuration 1; run it with cscript.
Option Explicit

Dim control
Set control = CreateObject("TLV_RDV_Line_Config.ucRDVLineConfig")
If control.ShowControl(1) Then
    WScript.Echo "The lines of configuration 1 were loaded."
    WScript.Quit 0
End If
WScript.Echo "The lines of configuration 1 could not be loaded."
WScript.Quit 1
