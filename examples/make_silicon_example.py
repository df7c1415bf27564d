#!/usr/bin/env python3
"""Makes silicon.xy: a calculated Cu K-alpha pattern of silicon (a = 5.43094 A, Fd-3m) on a
sloping background with a small amorphous hump, with Poisson counting noise. Deterministic.
The bundled example the program opens at first start; run again to regenerate it."""
import math, random

A = 5.43094
L1, L2, RATIO = 1.540593, 1.544427, 0.5
CM = [(6.2915, 2.4386), (3.0353, 32.3337), (1.9891, 0.6785), (1.5410, 81.6937)]
C0, B_ISO = 1.1407, 0.47

def f_si(s):  # s = sin(theta)/lambda
    return sum(a * math.exp(-b * s * s) for a, b in CM) + C0

def lines():
    out = {}
    for h in range(-12, 13):
        for k in range(-12, 13):
            for l in range(-12, 13):
                n = h * h + k * k + l * l
                if n == 0:
                    continue
                odd = h % 2 and k % 2 and l % 2
                even = not (h % 2 or k % 2 or l % 2)
                if odd:
                    f2 = 32.0
                elif even and (h + k + l) % 4 == 0:
                    f2 = 64.0
                else:
                    continue
                out[n] = out.get(n, 0.0) + f2
    return out

def pattern():
    x0, step, npts = 10.0, 0.02, 5501
    xs = [x0 + i * step for i in range(npts)]
    ys = [0.0] * npts
    for n, weight in lines().items():
        d = A / math.sqrt(n)
        for lam, w in ((L1, 1.0), (L2, RATIO)):
            s = lam / (2 * d)
            if s >= 1:
                continue
            th = math.asin(s)
            tt = 2 * math.degrees(th)
            if tt > 125:
                continue
            stl = s / lam
            lp = (1 + math.cos(2 * th) ** 2) / (math.sin(th) ** 2 * math.cos(th))
            inten = w * weight * f_si(stl) ** 2 * math.exp(-2 * B_ISO * stl * stl) * lp
            t = math.tan(th)
            fwhm = math.sqrt(0.02 * t * t - 0.006 * t + 0.012)
            for i in range(max(0, int((tt - 10 * fwhm - x0) / step)), min(npts, int((tt + 10 * fwhm - x0) / step) + 1)):
                dx = (xs[i] - tt) / fwhm
                g = math.exp(-4 * math.log(2) * dx * dx) * 2 * math.sqrt(math.log(2) / math.pi) / fwhm
                lo = 2 / (math.pi * fwhm) / (1 + 4 * dx * dx)
                ys[i] += inten * (0.5 * g + 0.5 * lo)
    top = max(ys)
    rng = random.Random(1998)
    counts = []
    for x, y in zip(xs, ys):
        bg = 90 + 260 * math.exp(-(x - 10) / 18) + 70 * math.exp(-((x - 24) / 7) ** 2)
        mean = bg + 12000 * y / top
        counts.append(max(0, round(rng.gauss(mean, math.sqrt(mean)))))
    return xs, counts

if __name__ == "__main__":
    xs, counts = pattern()
    with open("silicon.xy", "w") as f:
        f.write("; Silicon (a = 5.43094 A, Fd-3m), Cu K-alpha1/2, calculated with counting noise by make_silicon_example.py\n")
        for x, c in zip(xs, counts):
            f.write(f"{x:10.4f} {c:8d}\n")
