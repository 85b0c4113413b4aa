# SPDX-License-Identifier: MIT
"""Writes the five-point matrix of a plate with a hole, as a Matrix Market file: half of it, since it
is symmetric."""

SIDE, HOLE = 40, range(12, 28)
points = [(x, y) for y in range(SIDE) for x in range(SIDE) if x not in HOLE or y not in HOLE]
number = {point: i for i, point in enumerate(points, 1)}
entries = []
for (x, y), i in number.items():
    for point, value in (((x, y - 1), -1), ((x - 1, y), -1), ((x, y), 4)):
        if point in number:
            entries.append(f"{i} {number[point]} {value}")
print("%%MatrixMarket matrix coordinate real symmetric")
print(len(points), len(points), len(entries))
print("\n".join(entries))
