"""A dialog that holds the control, with the packages of pywin32 (win32com, win32ui, pywin).

Run it with a Python of the word size whose library is registered:  python line_form.py [CONFIGURATION]
"""
import sys

import win32api
import win32con
import win32ui
from pywin.mfc import activex, dialog
from win32com.client import gencache

# The type library, 1.0; the class that is made from it has the methods.
module = gencache.EnsureModule("{6B0E2D9A-4C57-4F0B-9A38-51C7E2F4D801}", 0, 1, 0)

WIDTH, HEIGHT = 620, 276  # in dialog units: about 920 by 448 pixels at 96 dots per inch
CONTROL_ID = 131


class LineControl(activex.Control, module.ucRDVLineConfig):
    """The control; the event calls the method that bears its name behind "On"."""

    dialog = None

    def OnRemoveME(self):
        # The control is still at work in here: the dialog is closed by a message of its own.
        win32api.PostMessage(self.dialog.GetSafeHwnd(), win32con.WM_CLOSE, 0, 0)


class LineDialog(dialog.Dialog):
    def __init__(self, configuration):
        style = win32con.WS_POPUP | win32con.WS_VISIBLE | win32con.WS_CAPTION | win32con.WS_SYSMENU
        title = "Lines of configuration %d" % configuration
        dialog.Dialog.__init__(self, [[title, (0, 0, WIDTH, HEIGHT), style, None, None]])
        self.configuration = configuration

    def OnInitDialog(self):
        result = dialog.Dialog.OnInitDialog(self)
        self.lines = LineControl()
        self.lines.dialog = self
        self.lines.CreateControl("Lines", win32con.WS_TABSTOP | win32con.WS_VISIBLE,
                                 self.GetClientRect(), self._obj_, CONTROL_ID)
        # False: the control has told the user why.
        if not self.lines.ShowControl(self.configuration):
            win32api.PostMessage(self.GetSafeHwnd(), win32con.WM_CLOSE, 0, 0)
        return result


if __name__ == "__main__":
    LineDialog(int(sys.argv[1]) if len(sys.argv) > 1 else 1).DoModal()
