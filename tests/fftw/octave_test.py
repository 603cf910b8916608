#!/usr/bin/env python3
"""Octave's transforms, filters and convolutions on our libraries, beside the same on Debian's FFTW.

usage: octave_test.py FOLDER_OF_THE_LIBRARIES     (skipped, with status 77, where there is no Octave)"""
import math
import shutil
import sys

from programs import run_on, skip

PROGRAM = r"""
1;
function show(name, x)
  printf("%s_%s", name, class(x)); x = double(x)(:);
  printf(" %.17g", real(x)); printf(" %.17g", imag(x)); printf("\n");
end
function r = numbers(varargin)
  n = prod([varargin{:}]);
  r = reshape(mod((1:n)' .^ 2 * 0.6180339887498949 + n / 7, 1) - 0.5, varargin{:});
end
for type = {"double", "single"}
  as = @(x) cast(x, type{1});
  t = type{1};
  for n = [1:20 31 32 64 97 100 128 240 1000 1024 1155]
    x = as(numbers(n, 3)); z = complex(x, as(numbers(n, 3) .^ 2));
    name = sprintf("%s_%d", t, n);
    show(["fft_" name], fft(x)); show(["fftz_" name], fft(z));
    show(["ifft_" name], ifft(z)); show(["ifftr_" name], ifft(fft(x)));
    show(["fft2nd_" name], fft(z, [], 2)); show(["pad_" name], fft(x, n + 3)); show(["cut_" name], fft(z, ceil(n / 2)));
    show(["fftrow_" name], fft(x.')); show(["fft3_" name], fft(reshape(z, 1, n, 3), [], 3));
  end
  for s = {[4 5], [8 8], [1 9], [9 1], [30 16], [33 21], [64 48]}
    n = s{1}; x = as(numbers(n)); z = complex(x, as(numbers(n) .^ 2)); name = sprintf("%s_%d_%d", t, n);
    show(["fft2_" name], fft2(x)); show(["fft2z_" name], fft2(z)); show(["ifft2_" name], ifft2(z));
    show(["ifft2r_" name], ifft2(fft2(x))); show(["fft2pad_" name], fft2(x, n(1) + 2, n(2) + 1));
  end
  for s = {[3 4 5], [8 8 8], [2 3 4 5], [2 1 6 1 3], [16 9 10]}
    n = s{1}; x = as(numbers(n)); z = complex(x, as(numbers(n) .^ 2)); name = [t sprintf("_%d", n)];
    show(["fftn_" name], fftn(x)); show(["fftnz_" name], fftn(z)); show(["ifftn_" name], ifftn(z));
    show(["fftnpad_" name], fftn(x, n + 1));
  end
  x = as(numbers(500, 1)); b = as(numbers(40, 1));
  show(["filter_" t], filter(b, 1, x)); show(["fftfilt_" t], fftfilt(b, x)); show(["fftconv_" t], fftconv(x, b));
  show(["conv2_" t], conv2(as(numbers(40, 30)), as(numbers(5, 7))));
  show(["fftshift_" t], fftshift(fft(x))); show(["freq_" t], fftconv(b, b, 128));
end
show("planner_double", length(fftw("planner")));
w = fftw("dwisdom"); fftw("dwisdom", w); show("wisdom_double", ischar(w));
maps = fileread("/proc/self/maps"); ours = regexp(maps, '\S*libfftw3f?\.so\S*', 'match');
printf("libraries %s\n", strjoin(unique(ours), " "));
"""


def numbers(text):
    results = {}
    for line in text.splitlines():
        name, *words = line.split()
        results[name] = words if name == "libraries" else [float(w) for w in words]
    return results


if not shutil.which("octave-cli"):
    skip("octave is not installed")
folder = sys.argv[1]
command = ["octave-cli", "--norc", "--no-history"]
ours, theirs = numbers(run_on(folder, command, PROGRAM)), numbers(run_on(None, command, PROGRAM))
libraries = ours.pop("libraries")
if len(libraries) < 2 or not all(library.startswith(folder) for library in libraries):
    sys.exit(f"Octave ran on {libraries}")
if any(library.startswith(folder) for library in theirs.pop("libraries")):
    sys.exit("the oracle ran on our libraries")
if ours.keys() != theirs.keys() or len(ours) < 300:
    sys.exit(f"{len(ours)} results, and not the same ones")
bad = []
for name, expected in theirs.items():
    eps = 2.0**-23 if "single" in name else 2.0**-52
    norm = math.sqrt(sum(x * x for x in expected)) or 1
    got = ours[name]
    error = math.sqrt(sum((x - y) ** 2 for x, y in zip(got, expected))) / norm
    if len(got) != len(expected) or not error <= 20 * eps:
        bad.append(f"{name}: {error / eps:.1f} eps")
print(f"{len(theirs)} results of Octave, {len(theirs) - len(bad)} as on Debian's FFTW")
sys.exit("\n".join(bad) if bad else 0)
