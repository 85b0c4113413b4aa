# SPDX-License-Identifier: MIT
"""Writes a formula in DIMACS CNF: 6 teams of 8 people, each person on one of 5 shifts, neighbours
in the team, and those three places apart, on different shifts; three of each team meet three of the next."""

TEAMS, PEOPLE, SHIFTS = 6, 8, 5


def on(team, person, shift):
    return (team * PEOPLE + person) * SHIFTS + shift + 1


clauses = []
for team in range(TEAMS):
    for person in range(PEOPLE):
        clauses.append([on(team, person, s) for s in range(SHIFTS)])
        for other in range(person + 1, PEOPLE):
            if other - person in (1, 3):
                clauses += [[-on(team, person, s), -on(team, other, s)] for s in range(SHIFTS)]
    for person in range(3):
        following = on((team + 1) % TEAMS, person + 2, 0)
        clauses += [[-on(team, person, s), following + s] for s in range(SHIFTS)]
print(f"p cnf {TEAMS * PEOPLE * SHIFTS} {len(clauses)}")
for clause in clauses:
    print(*clause, 0)
