"""Reports, captures and advanced information as the sample instrument saves them."""

import html
import struct

FRAME_SIZES = (64, 128, 256, 512, 1024, 1280, 1518)

_STYLE = """
body { font: 15px/1.45 "DejaVu Sans", "Segoe UI", Helvetica, Arial, sans-serif; color: #1d2733; margin: 2rem auto;
       max-width: 46rem; padding: 0 1rem; background: #fff }
header { border-bottom: 3px solid #3894e8; margin-bottom: 1.2rem }
h1 { font-size: 1.5rem; margin: 0 0 .3rem }
header p { margin: 0 0 .8rem; color: #5a6b80 }
.verdict { float: right; padding: .25rem .9rem; border-radius: 1rem; color: #fff; font-weight: bold }
.pass { background: #2f9e5f } .fail { background: #d6453d }
table { border-collapse: collapse; width: 100%; margin: 0 0 1.4rem }
th, td { padding: .35rem .6rem; border-bottom: 1px solid #dde4ec; text-align: right }
th { background: #eef3f9; color: #44566c; font-weight: 600 }
th:first-child, td:first-child { text-align: left }
table.facts td { text-align: left } table.facts td:first-child { color: #5a6b80; width: 32% }
figure { margin: 0 0 1.4rem } figcaption { color: #5a6b80; font-size: .85rem }
svg, img { max-width: 100% }
"""


def _frames(columns, unit, values):
    """A table with one row per frame size. values(rng, rate, size) gives the cells' texts and the charted number."""
    def rows(rng, rate):
        cells = [(size, *values(rng, rate, size)) for size in FRAME_SIZES]
        return ([[f"{size} bytes", *texts] for size, texts, _ in cells], [(str(size), n) for size, _, n in cells])
    return ("Frame size", *columns), unit, rows


def _limits(unit, *parameters):
    """A table of measured parameters: (name, low, high, unit, limit text)."""
    def rows(rng, _rate):
        values = [rng.uniform(low, high) for _, low, high, _, _ in parameters]
        return ([[name, f"{value:.3g} {unit}".strip(), limit]
                 for (name, _, _, unit, limit), value in zip(parameters, values)],
                [(name.split()[-1], abs(value)) for (name, *_), value in zip(parameters, values)])
    return ("Parameter", "Measured", "Limit"), unit, rows


def _throughput(rng, rate, size):
    share = size / (size + 20) * rng.uniform(0.994, 1.0)
    return ["100.00 %", f"{share * 100:.2f} %", f"{share * rate:,.1f} Mbit/s", "0"], share * rate


def _latency(rng, rate, size):
    low = 1.5 + size * 8 / rate + rng.uniform(0, 0.4)
    high = low + rng.uniform(0.5, 3)
    return [f"{low:.2f} µs", f"{(low + high) / 2:.2f} µs", f"{high:.2f} µs"], (low + high) / 2


def _loss(rng, rate, size):
    lost = rng.choice((0, 0, 0, 0, 1, 3, 12))
    sent = int(rate * 1e6 / 8 / (size + 20) * 10)
    return [f"{sent:,}", f"{sent - lost:,}", f"{lost}", f"{lost / sent * 100:.6f} %"], lost


def _bursts(rng, rate, size):
    frames = int(rate * 2.5e5 / (size + 20) * rng.uniform(0.97, 1))
    return [f"{frames:,}", f"{frames * (size + 20) * 8 / rate / 1000:,.1f} ms"], frames


_BIT_ERRORS = ("log scale", ("Bit errors", 0, 4, "", "10"), ("Bit error ratio", 1e-13, 9e-13, "", "1E-12"),
               ("Pattern losses", 0, 0.4, "", "0"), ("Round trip", 11, 14, "µs", "20 µs"))
_PHASE = ("UI peak-peak", ("Jitter 20 Hz", 0.2, 1.4, "UI", "1.5 UI"), ("Jitter 400 Hz", 0.1, 1.3, "UI", "1.5 UI"),
          ("Jitter 18 kHz", 0.02, 0.18, "UI", "0.2 UI"), ("Jitter 100 kHz", 0.02, 0.18, "UI", "0.2 UI"))
_OPTICS = ("dBm", ("Power 1310 nm", -9, -4, "dBm", "-12 dBm"), ("Power 1490 nm", -9, -4, "dBm", "-12 dBm"),
           ("Power 1550 nm", -9, -4, "dBm", "-12 dBm"), ("Power 1625 nm", -11, -6, "dBm", "-14 dBm"))
_CABLE = ("dB", ("Loss 100 m", 1.1, 2.2, "dB", "2.5 dB"), ("Return loss", 17, 26, "dB", "15 dB"),
          ("Crosstalk near end", 41, 48, "dB", "38 dB"), ("Length", 61, 88, "m", "90 m"))
_REPLY = ("ms", ("Reply 1", 0.2, 3, "ms", "10 ms"), ("Reply 2", 0.2, 3, "ms", "10 ms"),
          ("Reply 3", 0.2, 3, "ms", "10 ms"), ("Reply 4", 0.2, 3, "ms", "10 ms"))
_SERVICE = ("Mbit/s", ("Voice CIR", 9.6, 10, "Mbit/s", "10 Mbit/s"), ("Video CIR", 48, 50, "Mbit/s", "50 Mbit/s"),
            ("Data CIR", 190, 200, "Mbit/s", "200 Mbit/s"), ("Data EIR", 90, 100, "Mbit/s", "100 Mbit/s"))
_CLOCK = ("ns", ("MTIE 1 s", 3, 9, "ns", "25 ns"), ("MTIE 10 s", 6, 14, "ns", "40 ns"),
          ("MTIE 100 s", 9, 22, "ns", "60 ns"), ("TDEV 10 s", 0.4, 1.9, "ns", "3.2 ns"))

_TABLES = {
    "throughput": _frames(("Offered", "Throughput", "Rate", "Lost"), "Mbit/s", _throughput),
    "latency": _frames(("Minimum", "Mean", "Maximum"), "µs", _latency),
    "frameloss": _frames(("Sent", "Received", "Lost", "Ratio"), "frames lost", _loss),
    "backtoback": _frames(("Longest burst", "Duration"), "frames", _bursts),
    "y1564": _limits(*_SERVICE), "ping": _limits(*_REPLY), "traceroute": _limits(*_REPLY),
    "jitter": _limits(*_PHASE), "optics": _limits(*_OPTICS), "cable": _limits(*_CABLE), "clock": _limits(*_CLOCK),
    "bert": _limits(*_BIT_ERRORS),
}
_KIND = {
    "jit": "jitter", "jtf": "jitter", "mjt": "jitter", "pulse": "jitter", "sjitter": "jitter", "wan": "clock",
    "swander": "clock", "mtie": "clock", "opm": "optics", "odm": "optics", "wsa": "optics", "osa": "optics",
    "fmonitor": "optics", "tdr-trace": "cable", "fdr-trace": "cable",
}


def table_of(test):
    """Columns, chart unit and row maker of a test. A test without its own table is shown as a bit error test."""
    return _TABLES.get(_KIND.get(test, test), _TABLES["bert"])


def _svg(series, unit):
    top = max(value for _, value in series) or 1
    bars = []
    for index, (label, value) in enumerate(series):
        x, tall = 20 + index * 600 / len(series), 150 * value / top
        bars.append(f'<rect x="{x:.0f}" y="{170 - tall:.1f}" width="{360 / len(series):.0f}" height="{tall:.1f}" '
                    f'fill="#3894e8"/><text x="{x:.0f}" y="188">{html.escape(label)}</text>')
    return (f'<svg viewBox="0 0 640 200" role="img" aria-label="{html.escape(unit)}" font-size="13" fill="#44566c">'
            f'<line x1="10" y1="170" x2="630" y2="170" stroke="#b7c4d3"/>{"".join(bars)}</svg>')


def report(title, facts, test, rng, rate, picture=None):
    """An HTML report: heading with verdict, (name, value) facts, the measured table and its chart. With a picture
    (a file's name relative to the report) that stands in the chart's place. Returns the page and the charted series."""
    columns, unit, make_rows = table_of(test)
    rows, series = make_rows(rng, rate)
    passed = rng.random() < 0.85
    cell = lambda values, tag: "".join(f"<{tag}>{html.escape(value)}</{tag}>" for value in values)
    chart = (f'<img src="{html.escape(picture)}" width="560" height="240" alt="Chart of the table above">' if picture
             else _svg(series, unit))
    page = f"""<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<title>{html.escape(title)}</title>
<style>{_STYLE}</style>
</head>
<body>
<header><span class="verdict {'pass">PASS' if passed else 'fail">FAIL'}</span>
<h1>{html.escape(title)}</h1>
<p>Field network tester, sample unit 0042</p></header>
<table class="facts">{"".join(f"<tr>{cell(fact, 'td')}</tr>" for fact in facts)}</table>
<table><tr>{cell(columns, 'th')}</tr>
{chr(10).join(f"<tr>{cell(row, 'td')}</tr>" for row in rows)}</table>
<figure>{chart}<figcaption>{html.escape(unit)}</figcaption></figure>
</body>
</html>
"""
    return page.encode(), series, unit


def profile(title, facts):
    """A saved set-up as an HTML page: facts only."""
    rows = "".join(f"<tr><td>{html.escape(name)}</td><td>{html.escape(value)}</td></tr>" for name, value in facts)
    return f"""<!DOCTYPE html>
<html lang="en">
<head><meta charset="utf-8"><title>{html.escape(title)}</title><style>{_STYLE}</style></head>
<body><header><h1>{html.escape(title)}</h1><p>Saved set-up</p></header>
<table class="facts">{rows}</table></body>
</html>
""".encode()


def advanced_information(job, account, locator, kind):
    """Returns the advanced information of a result, with its job."""
    return (f'<?xml version="1.0" encoding="UTF-8"?>\n<result>\n  <ktb_advinfo job_id="{html.escape(job)}" '
            f'account_id="{html.escape(account)}" locator="{html.escape(locator)}" advtype="{html.escape(kind)}" '
            f'prefix="" suffix=""/>\n</result>\n').encode()


def _checksum(data):
    total = sum(struct.unpack(f">{len(data) // 2}H", data[:len(data) // 2 * 2]))
    if len(data) % 2:
        total += data[-1] << 8
    while total >> 16:
        total = (total & 0xFFFF) + (total >> 16)
    return ~total & 0xFFFF


def capture(rng):
    """A capture file: an address question with its answer, then echo requests with their replies."""
    here, there = bytes.fromhex("020000000001"), bytes.fromhex("020000000002")
    source, target = bytes((192, 0, 2, 10)), bytes((192, 0, 2, 20))

    def echo(kind, sequence, sender, receiver, sender_mac, receiver_mac):
        body = struct.pack(">BBHHH", kind, 0, 0, 0x4242, sequence) + bytes(range(0x61, 0x61 + 24)) * 2
        body = body[:2] + struct.pack(">H", _checksum(body)) + body[4:]
        head = struct.pack(">BBHHHBBH4s4s", 0x45, 0, 20 + len(body), sequence, 0, 64, 1, 0, sender, receiver)
        head = head[:10] + struct.pack(">H", _checksum(head)) + head[12:]
        return receiver_mac + sender_mac + b"\x08\x00" + head + body

    question = struct.pack(">HHBBH6s4s6s4s", 1, 0x0800, 6, 4, 1, here, source, bytes(6), target)
    answer = struct.pack(">HHBBH6s4s6s4s", 1, 0x0800, 6, 4, 2, there, target, here, source)
    packets = [b"\xff" * 6 + here + b"\x08\x06" + question + bytes(18), here + there + b"\x08\x06" + answer + bytes(18)]
    for sequence in range(1, 1 + rng.randint(3, 8)):
        packets.append(echo(8, sequence, source, target, here, there))
        packets.append(echo(0, sequence, target, source, there, here))
    out, clock = [struct.pack("<IHHiIII", 0xA1B2C3D4, 2, 4, 0, 0, 65535, 1)], 1_700_000_000_000_000
    for packet in packets:
        clock += rng.randint(180, 900_000)
        out.append(struct.pack("<IIII", clock // 1_000_000, clock % 1_000_000, len(packet), len(packet)) + packet)
    return b"".join(out)
