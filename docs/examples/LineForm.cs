// A Windows Forms program that holds the control, late-bound: no interop assembly is needed.
// .NET Framework, in a developer prompt:   csc /target:winexe /platform:x64 LineForm.cs
// .NET (net8.0-windows, UseWindowsForms):  put the file into a project; [STAThread] must stay.
// /platform:x86 needs the 32-bit library, x64 the 64-bit one; AnyCPU takes what the process becomes.
using System;
using System.Runtime.InteropServices;
using System.Runtime.InteropServices.ComTypes;
using System.Windows.Forms;

// The control's event, by its number in the type library.
[ComVisible(true), Guid("6B0E2D9A-4C57-4F0B-9A38-51C7E2F4D803")]
[InterfaceType(ComInterfaceType.InterfaceIsIDispatch)]
public interface ILineEvents {
    [DispId(1)] void RemoveME();
}

// The control in its place on a form.
public class LineControl : AxHost {
    public LineControl() : base("6B0E2D9A-4C57-4F0B-9A38-51C7E2F4D805") { }

    public event EventHandler RemoveME;

    // True: the lines are shown. False: the control has told the user why not.
    public bool ShowControl(short configuration) {
        return (bool)GetOcx().GetType().InvokeMember("ShowControl",
            System.Reflection.BindingFlags.InvokeMethod, null, GetOcx(),
            new object[] { configuration });
    }

    protected override void CreateSink() {
        Guid events = typeof(ILineEvents).GUID;
        IConnectionPoint point;
        ((IConnectionPointContainer)GetOcx()).FindConnectionPoint(ref events, out point);
        int cookie;
        point.Advise(new Sink(this), out cookie);
        point_ = point;
        cookie_ = cookie;
    }

    protected override void DetachSink() {
        if (point_ != null) point_.Unadvise(cookie_);
        point_ = null;
    }

    [ComVisible(true), ClassInterface(ClassInterfaceType.None)]
    private class Sink : ILineEvents {
        private readonly LineControl control_;
        public Sink(LineControl control) { control_ = control; }
        public void RemoveME() {
            if (control_.RemoveME != null) control_.RemoveME(control_, EventArgs.Empty);
        }
    }

    private IConnectionPoint point_;
    private int cookie_;
}

public class LineForm : Form {
    private readonly LineControl lines_ = new LineControl();
    private readonly short configuration_;

    public LineForm(short configuration) {
        configuration_ = configuration;
        Text = "Lines of configuration " + configuration;
        ClientSize = new System.Drawing.Size(920, 448);
        lines_.BeginInit();
        lines_.Dock = DockStyle.Fill;
        Controls.Add(lines_);
        lines_.EndInit();
        // The control is still at work while it raises the event: the form closes afterwards.
        lines_.RemoveME += delegate { BeginInvoke(new MethodInvoker(Close)); };
    }

    protected override void OnShown(EventArgs e) {
        base.OnShown(e);
        if (!lines_.ShowControl(configuration_)) Close();
    }

    [STAThread]
    public static void Main() {
        Application.EnableVisualStyles();
        Application.Run(new LineForm(1));
    }
}
