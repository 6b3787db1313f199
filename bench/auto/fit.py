#!/usr/bin/env python3
"""Fits the networks of hosts/auto/denoise_networks.cpp to what the filters gain on simulated pictures.

    fit.py BUILD PHOTOGRAPHS DRAWINGS CURVES > hosts/auto/denoise_networks.cpp

PHOTOGRAPHS and DRAWINGS are lists of files, one on each line. CURVES is a file that keeps what the filters gained: where
it exists, the lists are not looked at and only the fit is done again. Each item is filtered with several amounts; a network
chooses an amount and whether to filter at all, and what it gains is interpolated. Losses beyond 0.1 dB count seven
times. Three networks from different starts are put side by side into one, each with a third of the say.
"""
import os
import sys

import numpy as np

import items
from library import MODES, Library, psnr

AMOUNTS = {'fast': np.array([2.5, 4, 6, 9, 13, 18, 25, 35, 50]), 'non-local': np.array([.7, 1.3, 2.2, 3.5, 5.5, 8.5, 13, 20])}
UTMOST = 2.5  # deviations of an input, as in hosts/auto/advise.cpp
UNITS, STARTS, STEPS, RATE, DECAY = 8, 3, 2000, .02, 1e-3
TOLERATED, LOSS = .1, 6
WEIGHTS = {'processed mid': 2, 'processed high': 2}  # files of real cameras at high ISO are most like these
# A clean picture shall stay near itself: dB to itself from which on nothing is lost.
CLEAN_ENOUGH = {'clean': 47, 'clean E': 47, 'native': 47, 'drawing': 62}


def middle(picture):
    """What is filtered of an item; its noise is measured in all of it."""
    height, width = picture.shape[:2]
    y, x = max(0, height - 256) // 2 // 16 * 16, max(0, width - 288) // 2 // 16 * 16
    return np.ascontiguousarray(picture[y:y + 256, x:x + 288])


def gains(library, item, correlation, mode):
    """dB for each amount."""
    clean, noisy = middle(item.clean), middle(item.noisy)
    values = [psnr(clean, library.with_amount(noisy, amount, correlation, MODES[mode])) for amount in AMOUNTS[mode]]
    if item.kind in CLEAN_ENOUGH:
        return [.3 * min(value - CLEAN_ENOUGH[item.kind], 0) for value in values]
    return np.array(values) - psnr(clean, noisy)


class Network:
    """One layer of tanh; outputs: the logarithm of the amount in relation to the first input, log odds of a gain."""

    def __init__(self, inputs, random):
        self.parameters = [random.normal(0, inputs ** -.5, (inputs, UNITS)), np.zeros(UNITS),
                           random.normal(0, .3 * UNITS ** -.5, (UNITS, 2)), np.array([.8, .5])]

    def outputs(self, x):
        first, bias, second, biases = self.parameters
        self.hidden = np.tanh(x @ first + bias)
        return self.hidden @ second + biases

    def gradients(self, x, by_output):
        first, _, second, _ = self.parameters
        by_hidden = by_output @ second.T * (1 - self.hidden ** 2)
        return [x.T @ by_hidden + DECAY * first, by_hidden.sum(0), self.hidden.T @ by_output + DECAY * second,
                by_output.sum(0)]


def interpolated(curves, amounts, chosen):
    """What the chosen amounts gain, and the slopes by their logarithm."""
    places = np.log(amounts)
    at = np.clip(np.log(chosen), places[0], places[-1])
    i = np.clip(np.searchsorted(places, at) - 1, 0, len(places) - 2)
    rows = np.arange(len(chosen))
    slope = (curves[rows, i + 1] - curves[rows, i]) / (places[i + 1] - places[i])
    inside = (at > places[0]) & (at < places[-1])
    return curves[rows, i] + slope * (at - places[i]), slope * inside


def fitted(x, base, curves, weights, amounts, seed):
    """Kingma and Ba, "Adam: a method for stochastic optimization", 2015, over all items at once."""
    network = Network(x.shape[1], np.random.default_rng(seed))
    mean, square = ([np.zeros_like(p) for p in network.parameters] for _ in range(2))
    for step in range(1, STEPS + 1):
        outputs = network.outputs(x)
        gain, slope = interpolated(curves, amounts, np.exp(base + outputs[:, 0]))
        odds = 1 / (1 + np.exp(-np.clip(outputs[:, 1], -30, 30)))
        loses = gain < -TOLERATED
        worth = np.clip(gain + loses * LOSS * (gain + TOLERATED), -8, 4)
        by_output = -np.stack([odds * slope * (1 + loses * LOSS), odds * (1 - odds) * worth], 1) * weights[:, None] / len(x)
        for k, gradient in enumerate(network.gradients(x, by_output)):
            mean[k] = .9 * mean[k] + .1 * gradient
            square[k] = .999 * square[k] + .001 * gradient ** 2
            network.parameters[k] = network.parameters[k] - RATE * (1 - step / STEPS) * (mean[k] / (1 - .9 ** step)) / (
                np.sqrt(square[k] / (1 - .999 ** step)) + 1e-8)
    return network


def number(value):
    text = f'{value:.4g}'
    return text + ('F' if '.' in text or 'e' in text else '.0F')


def numbers(values):
    return '{' + ', '.join(map(number, values)) + '}'


def print_networks(mean, deviation, networks):
    print('// Written by bench/auto/fit.py.\n#include "hosts/auto/denoise_networks.h"\n\nnamespace vx::automatic {\n')
    print(f'const NetworkInputs kNetworkInputs = {{{numbers(mean)}, {numbers(deviation)}}};\n')
    for mode, name in (('non-local', 'kNonLocalNetwork'), ('fast', 'kFastNetwork')):
        print(f'const Network {name} = {{{{{{')
        for network in networks[mode]:
            first, bias, second, _ = network.parameters
            for unit in range(UNITS):
                print(f'{{{numbers(first[:, unit])}, {number(bias[unit])}, {numbers(second[unit] / STARTS)}}},')
        print(f'}}}}, {numbers(np.mean([n.parameters[3] for n in networks[mode]], 0))}}};\n')
    print('}  // namespace vx::automatic')


def measured(library, photographs, drawings):
    """Inputs of the networks, kinds of items, and what the amounts of each mode gain, for all items."""
    sources = [(items.of_photograph(path, 1, 9), path) for path in photographs]
    sources += [(items.of_drawing(path), path) for path in drawings]
    result = {name: [] for name in ('inputs', 'kinds', *MODES)}
    for source, path in sources:
        for item in source:
            inputs = library.inputs(item.noisy, item.steps)
            result['inputs'].append(inputs)
            result['kinds'].append(item.kind)
            for mode in MODES:
                result[mode].append(gains(library, item, np.exp(inputs[0] - inputs[3]), mode))
        print(len(result['inputs']), path, file=sys.stderr, flush=True)
    return {name: np.array(values) for name, values in result.items()}


def main():
    build, photographs, drawings, curves = sys.argv[1:5]
    if not os.path.exists(curves):
        lists = ([line.strip() for line in open(name)] for name in (photographs, drawings))
        with open(curves, 'wb') as file:
            np.savez(file, **measured(Library(build), *lists))
    data = np.load(curves)
    x = data['inputs']
    base, mean, deviation = x[:, 0], x.mean(0), x.std(0) + 1e-6
    x = np.clip((x - mean) / deviation, -UTMOST, UTMOST)
    weights = np.array([WEIGHTS.get(kind.removesuffix(' E'), 1) for kind in data['kinds']])
    print_networks(mean, deviation,
                   {mode: [fitted(x, base, data[mode], weights, AMOUNTS[mode], seed) for seed in range(STARTS)]
                    for mode in MODES})


if __name__ == '__main__':
    main()
