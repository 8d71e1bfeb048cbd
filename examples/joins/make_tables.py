#!/usr/bin/env python3
"""Writes the tables of the example to this folder: the same ones every time.

The people are invented. Each table has the identity number in a layout of its own. Some customers
have no order, some orders belong to no customer in customers.csv, and some are not paid.
"""
import csv
import datetime
import os
import random

ROWS = 30
FIRST = "Anna Bernd Carla David Emma Felix Greta Hugo Irene Jonas".split()
LAST = "Adler Brown Costa Dubois Evans Fischer Garcia Hansen Ivanova Jensen".split()


def with_separators(number, separator):
    return separator.join((number[:3], number[3:5], number[5:]))


def tables(rows):
    """The rows of each table, the header first, by its name."""
    rng = random.Random(1)

    def below(bound):
        # Unlike randrange(), random() gives the same numbers in every version of Python.
        return int(rng.random() * bound)

    customers = [("IDENTITY", "NAME", "EMAIL", "BORN")]
    orders = [("ORDER_NO", "IDENTITY", "EMAIL", "ORDERED")]
    payments = [("PAYMENT_NO", "ORDER_NO", "IDENTITY", "PAID")]
    people = []
    # The last tenth has been removed from the customers.
    for number in range(rows + rows // 10):
        first, last = FIRST[below(len(FIRST))], LAST[below(len(LAST))]
        # The step has no divisor in common with the count, so that all identity numbers differ.
        identity = f"{(number + 1) * 271828183 % 10**9:09}"
        email = f"{first}.{last}{number}@mail.example"
        people.append((identity, email))
        born = datetime.date(1940, 1, 1) + datetime.timedelta(below(25000))
        if number < rows:
            customers.append((with_separators(identity, "-"), f"{first} {last}", email.lower(),
                              born))
    for number in range(rows):
        identity, email = people[below(len(people))]
        ordered = datetime.date(2024, 1, 1) + datetime.timedelta(below(300))
        orders.append((90 + number, identity, email, ordered))
        for _ in range(below(3)):
            paid = ordered + datetime.timedelta(below(60))
            payments.append((5000 + len(payments), 90 + number, with_separators(identity, " "),
                             paid))
    return {"customers": customers, "orders": orders, "payments": payments}


def write(name, rows, folder):
    with open(os.path.join(folder, f"{name}.csv"), "w", encoding="utf-8", newline="") as file:
        csv.writer(file, lineterminator="\n").writerows(rows)


def main():
    for name, rows in tables(ROWS).items():
        write(name, rows, os.path.dirname(os.path.abspath(__file__)))


if __name__ == "__main__":
    main()
