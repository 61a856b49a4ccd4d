// Test programs see the environment that they are run in, as they do on other machines.
Module.preRun = [() => Object.assign(ENV, process.env)];
