import type { Theme } from "vitepress";
import DefaultTheme from "vitepress/theme-without-fonts";

import LiveOperations from "./LiveOperations.vue";

import "./style.css";
import "./live.css";

export default {
  extends: DefaultTheme,
  enhanceApp: ({ app }) => void app.component("LiveOperations", LiveOperations),
} satisfies Theme;
