/** The path that the site is built for; place.mjs puts the true one there. */
export const builtBase = "/path-of-the-site/";
