// Numbers as text.

// Returns the shortest text that gives the same 32-bit number when it is read.
function exactText(value) {
  if (!Number.isFinite(value)) return String(value);
  for (let digits = 1; digits < 9; ++digits) {
    const text = value.toPrecision(digits);
    if (Math.fround(Number(text)) === value) return String(Number(text));
  }
  return String(Number(value.toPrecision(9)));
}

// Returns a number with as many digits as `resolution`, the distance of two steps, justifies.
function roundedText(value, resolution) {
  if (!(resolution > 0)) return String(Number(value.toPrecision(7)));
  if (Math.abs(value) < resolution / 2) return "0";
  const digits = Math.floor(Math.log10(Math.abs(value))) - Math.floor(Math.log10(resolution)) + 1;
  return String(Number(value.toPrecision(Math.min(Math.max(digits, 1), 17))));
}

// Returns the round values from `low` to `high` for a scale with about `count` steps.
function ticksOf(low, high, count) {
  const rough = (high - low) / count;
  if (!(rough > 0) || !Number.isFinite(rough)) return [low];
  const power = 10 ** Math.floor(Math.log10(rough));
  const step = power * [1, 2, 5, 10].find(factor => factor * power >= rough * 0.999);
  if (!(step > 0) || low + step === low) return [low];
  const ticks = [];
  for (let i = Math.ceil(low / step - 1e-9); i * step <= high + step * 1e-9; ++i) {
    ticks.push(Number((i * step).toPrecision(12)));
  }
  return ticks;
}

// Returns the texts of ticks, with the same number of decimals.
function tickTexts(ticks) {
  const greatest = Math.max(...ticks.map(Math.abs));
  const step = ticks.length > 1 ? Math.abs(ticks[1] - ticks[0]) : greatest;
  if (greatest === 0) return ticks.map(() => "0");
  if (greatest >= 1e5 || greatest < 1e-3) {
    const digits = Math.floor(Math.log10(greatest)) - Math.floor(Math.log10(step) + 1e-9);
    return ticks.map(t => t === 0 ? "0" : t.toExponential(Math.min(Math.max(digits, 0), 12)));
  }
  const decimals = ticks.length > 1 ? Math.max(0, -Math.floor(Math.log10(step) + 1e-9)) : 0;
  return ticks.length > 1 ? ticks.map(t => t.toFixed(Math.min(decimals, 12)))
                          : ticks.map(t => String(Number(t.toPrecision(7))));
}

function plural(count, noun) {
  return `${count.toLocaleString("en")} ${noun}${count === 1 ? "" : "s"}`;
}
