# SPDX-License-Identifier: MIT
"""Writes a trace of 3,000 orders of a shop as CSV: which records each reads. Customers order again
what others of their town do; a few articles are in everybody's orders."""

import csv
import random
import sys

chance = random.Random(7)
out = csv.writer(sys.stdout, lineterminator="\n")
out.writerow(["transaction", "item"])
for order in range(3000):
    town = chance.randrange(12)
    items = {f"customer/{town}/{chance.randrange(40)}", f"stock/{town}"}
    items |= {f"article/{town}/{int(30 * chance.random() ** 2)}" for _ in range(chance.randint(1, 4))}
    if chance.random() < 0.15:
        items.add(f"article/common/{chance.randrange(5)}")
    out.writerows([f"order{order}", item] for item in sorted(items))
