import zorexp

PNG_SIGNATURE = b"\x89PNG\r\n\x1a\n"


def is_png(path):
    data = path.read_bytes()
    return data[:8] == PNG_SIGNATURE and b"IEND" in data[-12:]


def test_profile_plot_is_a_png_with_labels_in_units(example, tmp_path):
    fs = zorexp.Flowsheet.load(example("coolant_profile.json"))
    fs.solve()
    ax = fs.plot("WALL.Q_FLUX", file=tmp_path / "q.png")
    assert is_png(tmp_path / "q.png")
    unit = fs["WALL.Q_FLUX"].unit
    assert unit in ax.get_ylabel() and "WALL.Q_FLUX" in ax.get_ylabel()
    assert list(ax.lines[0].get_xdata()) == list(range(9))


def test_command_plots(example, tmp_path, cli):
    out = tmp_path / "profile.png"
    status, _, err = cli("solve", example("coolant_profile.json"), "--no-log", "--plot", out,
                         "--plot-vars", "WALL.Q_FLUX")
    assert status == 0, err
    assert is_png(out)
    status, _, err = cli("solve", example("coolant_profile.json"), "--no-log", "--plot", out)
    assert status == 0, err
    assert {p.name for p in tmp_path.glob("profile-*.png")} >= {"profile-WALL.Q_FLUX.png", "profile-WALL.T_PROCESS.png"}
    status, _, err = cli("solve", example("coolant_profile.json"), "--no-log", "--plot", out, "--plot-vars", "WALL.NOPE")
    assert status == 1 and "WALL.NOPE" in err
